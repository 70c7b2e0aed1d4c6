// The processes that work on one run together, on this machine or on many: this one alone, unless others have joined it
// (entry/join.h). All read the same command line; the first runs it, and calls on the others where there is something
// to share. What they have to say goes through the first.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace norv {

// What a message is about.
enum class Topic : int32_t {
  call = 1,  // from the first rank: a share of work begins, or, with no text, the run is over
  pass,      // to the first rank: this one has no part in it, and why
  bye,       // to the first rank: the last message of this one
  words,     // to the first rank: something to be said
  question,  // to the first rank (service.h)
  answer,    // from it
  rows,      // between any: rows of a picture, or what became of them
  peers,     // between those who restore a plane together: rows and sums of it
};

struct Message {
  int32_t from = 0;
  Topic topic = Topic::call;
  std::string text = {};  // any bytes
};

class PlacedFile {
 public:
  PlacedFile() = default;
  virtual ~PlacedFile() = default;
  PlacedFile(const PlacedFile&) = delete;
  PlacedFile& operator=(const PlacedFile&) = delete;

  // Both throw a Failure. position: bytes from the start.
  virtual void Write(int64_t position, const void* bytes, size_t size) = 0;
  // All is on the disk.
  virtual void Finish() = 0;
};

class Ranks {
 public:
  Ranks() = default;
  virtual ~Ranks() = default;
  Ranks(const Ranks&) = delete;
  Ranks& operator=(const Ranks&) = delete;

  virtual int32_t Rank() const { return 0; }
  virtual int32_t Count() const { return 1; }
  virtual int32_t OnThisMachine() const { return 1; }
  bool IsFirst() const { return Rank() == 0; }
  bool AreSeveral() const { return Count() > 1; }

  // From any thread. Messages of one topic from one rank to another keep their order.
  virtual void Send(int32_t to, Topic topic, const std::string& text);
  // The same without waiting until it is taken, and the wait for all of that topic that was posted.
  virtual void Post(int32_t to, Topic topic, std::string&& text);
  virtual void Settle(Topic) {}
  // Waits, which costs no processor; for what comes `soon` it looks all the time at first. The first rank says
  // meanwhile what others have to say. Throws a Failure where a rank has passed, or the run has ended.
  virtual Message Receive(int32_t from, Topic topic, bool soon = false);
  // Any message that is there; waits for any, which is for several ranks only.
  virtual std::optional<Message> Look();
  Message ReceiveAny();

  // A file that is there, to be written at any place; bytes of several ranks do not overlap.
  virtual std::unique_ptr<PlacedFile> OpenPlaced(const std::string& path);

  // The first rank: all others are called.
  void CallAll();
  // Another: waits for a call; false, for ever, once the run is over.
  bool AwaitCall();
  // Another: its share is done, as the first one knows.
  void EndShare() { called_ = false; }
  // Another, within its share: throws a Failure where the first one has given it up.
  virtual void RequireShare() {}
  // At the end of a run, on every rank: the first lets all others go. Whoever has not done its share, or is called
  // again, passes for this reason.
  void Leave(const std::string& reason);
  // Another that has been called: the first says it, on standard output or else standard error. Before, nothing is
  // said: the first one says the same.
  void SayByFirst(bool output, const std::string& text);
  // The first rank says what a message of that topic says.
  static void SayFor(const Message& words);

 protected:
  // A call that comes to one who works on a share: the first has given it up. Throws a Failure.
  void Heed(const Message& call);

 private:
  bool left_ = false;
  std::atomic<bool> called_{false};
};

// Of this process.
Ranks& World();
// From now on, until null is given. Before others ask.
void SetWorld(Ranks* ranks);

}  // namespace norv
