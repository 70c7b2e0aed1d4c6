#include "kit/ranks/ranks.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "kit/failure.h"
#include "platform/console.h"

namespace norv {
namespace {

Ranks* joined = nullptr;

constexpr char kBegin[] = "begin", kOutput = 'o', kError = 'e';

}  // namespace

// Alone there is nobody to send to, and nothing to wait for.
void Ranks::Send(int32_t, Topic, const std::string&) {}
void Ranks::Post(int32_t to, Topic topic, std::string&& text) { Send(to, topic, text); }
Message Ranks::Receive(int32_t from, Topic topic, bool) { return {from, topic}; }
std::optional<Message> Ranks::Look() { return {}; }
std::unique_ptr<PlacedFile> Ranks::OpenPlaced(const std::string&) { return nullptr; }

Message Ranks::ReceiveAny() {
  std::chrono::microseconds pause{0};
  for (;;) {
    if (std::optional<Message> message = Look()) return std::move(*message);
    pause = std::min(pause + std::chrono::microseconds(50), std::chrono::microseconds(1000));
    std::this_thread::sleep_for(pause);
  }
}

void Ranks::CallAll() {
  for (int32_t rank = 1; rank < Count(); ++rank) Send(rank, Topic::call, kBegin);
}

bool Ranks::AwaitCall() {
  if (!left_) left_ = Receive(0, Topic::call).text.empty();
  called_ = !left_;
  return called_;
}

void Ranks::Heed(const Message& call) {
  left_ = call.text.empty();
  Fail("the run has ended");
}

void Ranks::Leave(const std::string& reason) {
  if (!IsFirst()) {
    const auto pass = [&] { Send(0, Topic::pass, reason); };
    if (called_) pass();
    while (AwaitCall()) pass();
    return Send(0, Topic::bye, "");
  }
  for (int32_t rank = 1; rank < Count(); ++rank) Send(rank, Topic::call, "");
  // What is under way is taken, so that nobody waits for it to be.
  for (int32_t there = Count() - 1; there > 0;) {
    const Message message = ReceiveAny();
    if (message.topic == Topic::words) SayFor(message);
    there -= message.topic == Topic::bye;
  }
}

void Ranks::SayByFirst(bool output, const std::string& text) {
  if (called_) Send(0, Topic::words, (output ? kOutput : kError) + text);
}

void Ranks::SayFor(const Message& words) {
  if (words.text.starts_with(kOutput))
    Say("%s", words.text.c_str() + 1);
  else
    PrintLine(words.text.substr(1));
}

Ranks& World() {
  static Ranks alone;
  return joined ? *joined : alone;
}

void SetWorld(Ranks* ranks) { joined = ranks; }

}  // namespace norv
