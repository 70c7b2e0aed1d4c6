// The only file that knows MPI. It asks for no more than one call at a time, from any thread, and waits by looking and
// sleeping: the library's own waiting would take a processor from those who work.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <list>
#include <memory>
#include <mpi.h>
#include <mutex>
#include <sched.h>
#include <thread>
#include <utility>

#include "kit/failure.h"
#include "kit/kit.h"
#include "kit/ranks/entry/join.h"
#include "kit/ranks/ranks.h"
#include "platform/console.h"
#include "platform/interrupt.h"
#include "platform/team.h"

namespace norv {
namespace {

// Whether every rank of this machine has a processor of its own.
bool haveProcessors = false;

// Looks ever more seldom; for what comes soon without sleeping at first, and without giving way where that is nobody's
// loss: who does so while other programs want the processor is not asked again for milliseconds.
class Patience {
 public:
  explicit Patience(bool soon) : left_(soon ? 20000 : 0) {}

  void Wait() {
    if (left_ > 0) {
      --left_;
      if (!haveProcessors) sched_yield();
      return;
    }
    std::this_thread::sleep_for(pause_);
    pause_ = std::min(pause_ * 5 / 4, std::chrono::microseconds(1000));
  }

 private:
  int left_;
  std::chrono::microseconds pause_{50};
};

// Each rank opens the file for itself: nothing of one waits for another.
class MpiFile : public PlacedFile {
 public:
  explicit MpiFile(const std::string& path) : path_(path) {
    Require(MPI_File_open(MPI_COMM_SELF, path.c_str(), MPI_MODE_WRONLY, MPI_INFO_NULL, &file_));
  }
  ~MpiFile() override {
    if (file_ != MPI_FILE_NULL) MPI_File_close(&file_);
  }

  void Write(int64_t position, const void* bytes, size_t size) override {
    constexpr size_t kMost = size_t{1} << 30;  // counts are ints
    const char* from = static_cast<const char*>(bytes);
    for (size_t done = 0, part; done < size; done += part) {
      part = std::min(size - done, kMost);
      Require(MPI_File_write_at(file_, position + static_cast<int64_t>(done), from + done, static_cast<int>(part),
                                MPI_BYTE, MPI_STATUS_IGNORE));
    }
  }
  void Finish() override {
    Require(MPI_File_sync(file_));
    Require(MPI_File_close(&file_));
  }

 private:
  void Require(int code) const {
    if (code == MPI_SUCCESS) return;
    char words[MPI_MAX_ERROR_STRING] = "";
    int length = 0;
    MPI_Error_string(code, words, &length);
    Fail("cannot write %s: %s", path_.c_str(), words);
  }

  const std::string path_;
  MPI_File file_ = MPI_FILE_NULL;
};

class MpiRanks : public Ranks {
 public:
  MpiRanks() {
    int provided = 0;
    MPI_Init_thread(nullptr, nullptr, MPI_THREAD_SERIALIZED, &provided);
    if (provided < MPI_THREAD_SERIALIZED) Fail("this MPI library serves no program with threads");
    MPI_Comm_rank(MPI_COMM_WORLD, &rank_);
    MPI_Comm_size(MPI_COMM_WORLD, &count_);
    ShareMachine();
  }
  ~MpiRanks() override { MPI_Finalize(); }

  int32_t Rank() const override { return rank_; }
  int32_t Count() const override { return count_; }
  int32_t OnThisMachine() const override { return onThisMachine_; }

  void Send(int32_t to, Topic topic, const std::string& text) override {
    MPI_Request request;
    Alone([&] {
      MPI_Isend(text.data(), static_cast<int>(text.size()), MPI_BYTE, to, static_cast<int>(topic), MPI_COMM_WORLD,
                &request);
    });
    for (Patience patience(true);; patience.Wait()) {
      int sent = 0;
      Alone([&] { MPI_Test(&request, &sent, MPI_STATUS_IGNORE); });
      if (sent) return;
    }
  }

  void Post(int32_t to, Topic topic, std::string&& text) override {
    LetGo(topic);
    const std::lock_guard hold(mutex_);
    Posted& posted = posted_.emplace_back(Posted{topic, std::move(text), MPI_REQUEST_NULL});
    MPI_Isend(posted.text.data(), static_cast<int>(posted.text.size()), MPI_BYTE, to, static_cast<int>(topic),
              MPI_COMM_WORLD, &posted.request);
  }
  void Settle(Topic topic) override {
    for (Patience patience(true); !LetGo(topic); patience.Wait()) {
      if (IsFirst())
        HeedOthers();
      else
        RequireShare();
    }
  }

  Message Receive(int32_t from, Topic topic, bool soon) override {
    for (Patience patience(soon);; patience.Wait()) {
      // Looked for first: what was sent before it is then there, too.
      const bool over = !IsFirst() && topic != Topic::call && IsThere(0, Topic::call);
      if (std::optional<Message> message = Find(from, static_cast<int>(topic))) return std::move(*message);
      if (over) RequireShare();
      if (IsFirst()) HeedOthers();
    }
  }

  std::unique_ptr<PlacedFile> OpenPlaced(const std::string& path) override { return std::make_unique<MpiFile>(path); }

  void RequireShare() override {
    if (const std::optional<Message> call = Find(0, static_cast<int>(Topic::call))) Heed(*call);
  }

  std::optional<Message> Look() override { return Find(MPI_ANY_SOURCE, MPI_ANY_TAG); }

 private:
  template <typename Call>
  void Alone(const Call& call) {
    const std::lock_guard hold(mutex_);
    call();
  }

  std::optional<Message> Find(int source, int tag) {
    const std::lock_guard hold(mutex_);
    MPI_Message handle;
    MPI_Status status;
    int there = 0, size = 0;
    MPI_Improbe(source, tag, MPI_COMM_WORLD, &there, &handle, &status);
    if (!there) return {};
    MPI_Get_count(&status, MPI_BYTE, &size);
    Message message{status.MPI_SOURCE, static_cast<Topic>(status.MPI_TAG), std::string(static_cast<size_t>(size), 0)};
    MPI_Mrecv(message.text.data(), size, MPI_BYTE, &handle, MPI_STATUS_IGNORE);
    return message;
  }

  bool IsThere(int source, Topic topic) {
    const std::lock_guard hold(mutex_);
    int there = 0;
    MPI_Iprobe(source, static_cast<int>(topic), MPI_COMM_WORLD, &there, MPI_STATUS_IGNORE);
    return there != 0;
  }

  // What was posted and is taken; whether that is all of the topic.
  bool LetGo(Topic topic) {
    const std::lock_guard hold(mutex_);
    posted_.remove_if([](Posted& posted) {
      int taken = 0;
      MPI_Test(&posted.request, &taken, MPI_STATUS_IGNORE);
      return taken != 0;
    });
    return std::ranges::none_of(posted_, [&](const Posted& posted) { return posted.topic == topic; });
  }

  // The first rank, waiting for a part of a share, says what others have to say and learns that there will be none.
  void HeedOthers() {
    while (const std::optional<Message> words = Find(MPI_ANY_SOURCE, static_cast<int>(Topic::words))) SayFor(*words);
    if (const std::optional<Message> passed = Find(MPI_ANY_SOURCE, static_cast<int>(Topic::pass)))
      Fail("rank %d: %s", passed->from, passed->text.c_str());
  }

  // How many ranks there are on this machine, and which part of its processors is this one's: of those that any of them
  // may use an equal share, none that it may not use itself.
  void ShareMachine() {
    MPI_Comm machine;
    MPI_Comm_split_type(MPI_COMM_WORLD, MPI_COMM_TYPE_SHARED, rank_, MPI_INFO_NULL, &machine);
    MPI_Comm_size(machine, &onThisMachine_);
    cpu_set_t own, all;
    CPU_ZERO(&own);
    sched_getaffinity(0, sizeof own, &own);
    MPI_Allreduce(&own, &all, sizeof own, MPI_BYTE, MPI_BOR, machine);
    MPI_Comm_free(&machine);
    const int share = CPU_COUNT(&all) / onThisMachine_;
    haveProcessors = share > 0;
    ProcessorShare() = std::clamp(share, 1, std::max(ProcessorCount(), 1));
  }

  struct Posted {
    Topic topic;
    std::string text;
    MPI_Request request;
  };

  int rank_ = 0, count_ = 1, onThisMachine_ = 1;
  std::mutex mutex_;
  std::list<Posted> posted_;  // under way
};

// Whether something has started this process as one of several, or may have.
bool IsLaunched() {
  constexpr std::array kSigns = {"OMPI_COMM_WORLD_SIZE", "PMIX_RANK", "PMI_RANK", "PMI_SIZE", "PALS_RANKID"};
  return std::ranges::any_of(kSigns, [](const char* name) { return std::getenv(name) != nullptr; });
}

// A scheduler that starts tasks which MPI does not join would have each of them do the whole work.
void RequireJoined(int32_t count) {
  const char* tasks = std::getenv("SLURM_STEP_NUM_TASKS");
  if (tasks && count == 1 && std::atoi(tasks) > 1)
    Fail("Slurm started %s tasks and MPI joined none of them: srun --mpi=pmix, or mpirun, does", tasks);
}

int RunJoined(const std::vector<std::string>& arguments) {
  MpiRanks ranks;
  SetWorld(&ranks);
  if (!ranks.IsFirst()) HandWordsTo([](bool output, const std::string& text) { World().SayByFirst(output, text); });
  const int code = RunKit(arguments);
  ranks.Leave(LastComplaint());
  SetWorld(nullptr);
  return ranks.IsFirst() ? code : 0;
}

}  // namespace

int RunInWorld(const std::vector<std::string>& arguments) {
  NameProgram("norvkit-mpi");
  const bool launched = IsLaunched();
  const char* rank = std::getenv("OMPI_COMM_WORLD_RANK");
  EndInterruptsInWords(rank && std::atoi(rank) > 0 ? "" : "norvkit-mpi: interrupted\n");
  try {
    if (launched) return RunJoined(arguments);
    RequireJoined(1);
    return RunKit(arguments);
  } catch (const std::exception& error) {
    Complain("%s", error.what());
    return 1;
  }
}

}  // namespace norv
