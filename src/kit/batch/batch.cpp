#include "kit/batch/batch.h"

#include <filesystem>
#include <mutex>

#include "kit/batch/desk.h"
#include "kit/batch/lanes.h"
#include "kit/failure.h"
#include "kit/ranks/ranks.h"
#include "kit/ranks/service.h"
#include "kit/work/make_picture.h"
#include "kit/work/reported.h"
#include "linear/matrix2.h"
#include "platform/memory.h"
#include "platform/native/before_rename.h"
#include "platform/native/native_file.h"
#include "platform/paths.h"
#include "platform/threads/crew.h"

namespace norv {
namespace {

namespace fs = std::filesystem;

// A picture's share of the progress of all, by the bytes of its file.
class Share {
 public:
  Share(JobDesk& desk, int64_t bytes) : desk_(desk), bytes_(bytes) {}
  ~Share() { Reach(bytes_); }
  Share(const Share&) = delete;
  Share& operator=(const Share&) = delete;

  void Advance(int32_t rows, int32_t height) {
    rows_ += rows;
    Reach(static_cast<int64_t>(static_cast<double>(bytes_) * rows_ / height));
  }

 private:
  void Reach(int64_t bytes) {
    desk_.Advance(bytes - reached_);
    reached_ = bytes;
  }

  JobDesk& desk_;
  int64_t bytes_, reached_ = 0;
  int32_t rows_ = 0;
};

class Batch {
 public:
  Batch(const WorkOrder& order, JobDesk& desk, int32_t threads, uint64_t bound)
      : order_(order), desk_(desk), lanes_(threads, bound, !order.choice.memory.empty()) {}

  // Until nothing is left; several threads at a time.
  void Work() {
    while (const std::optional<Turn> turn = Take()) desk_.Finish(turn->handed, Tried(turn->handed.job, turn->number));
  }

 private:
  // Of the lanes, which count the pictures of this process.
  struct Turn {
    HandedOut handed;
    int64_t number;
  };

  std::optional<Turn> Take() {
    const std::lock_guard inOrder(taking_);
    std::optional<HandedOut> handed = desk_.Take();
    if (!handed) return {};
    return Turn{std::move(*handed), next_++};
  }

  Made Tried(const Job& job, int64_t turn) {
    bool entered = false;
    try {
      if (job.state == Job::State::failed) throw Failure(job.error);
      return Make(job, turn, entered);
    } catch (...) {
      Made failed{.input = job.input, .output = job.output, .error = FailureInWords()};
      if (!entered) lanes_.Pass(turn);
      ReportPicture(order_, failed, matrix());
      return failed;
    }
  }

  Made Make(const Job& job, int64_t turn, bool& entered) {
    Share share(desk_, job.bytes);
    JournalEntry entry = EntryOf(order_, job);
    OpenedPicture picture = OpenForWork(order_, job.input);
    entered = true;
    const Lanes::Place place(lanes_, turn, picture.plan);
    if (place.IsFirst()) ForgetPeakMemory();
    picture.replace = job.replace;
    picture.advanced = [&share](int32_t rows, int32_t height) { share.Advance(rows, height); };
    fs::create_directories(ToNative(job.output).parent_path());
    const std::string target = FinalTarget(job.output);
    const BeforeRename note([&](const std::string& temporary, const std::string& destination) {
      if (destination != target) return;
      entry.ofOutput = MarkOf(temporary);
      desk_.Note(job.name, entry);
    });
    return MakePicture(order_, std::move(picture), job.output, place.Threads());
  }

  const WorkOrder& order_;
  JobDesk& desk_;
  Lanes lanes_;
  std::mutex taking_;
  int64_t next_ = 0;
};

std::string InWords(const Made& made) {
  return made.error.starts_with(made.input) ? made.error : made.input + ": " + made.error;
}

}  // namespace

std::vector<Made> RunJobs(const WorkOrder& order, const JobList& list, const Journal& journal, int32_t threads,
                          uint64_t bound) {
  OwnDesk desk(order, list, journal, World().AreSeveral());
  {
    const RankService service([&](const std::string& asked) { return AnswerOf(desk, order.page.get(), asked); });
    Batch batch(order, desk, threads, bound);
    SideBySide(threads, [&batch] { batch.Work(); });
  }
  return desk.Tried();
}

void HelpWithJobs(const WorkOrder& order, int32_t threads, uint64_t bound) {
  if (!World().AwaitCall()) return;
  FarDesk desk(order.page.get());
  Batch batch(order, desk, threads, bound);
  SideBySide(threads, [&batch] { batch.Work(); });
}

std::string SummaryOf(const JobList& list, const std::vector<Made>& tried) {
  int64_t failed = 0, skipped = 0;
  std::string failures;
  for (const Job& job : list.jobs) skipped += job.state == Job::State::skipped;
  for (const Made& made : tried) {
    if (!made.Failed()) continue;
    failures += (failed++ > 0 ? "; " : "") + InWords(made);
  }
  const int64_t done = static_cast<int64_t>(tried.size()) - failed;
  std::string text;
  const auto add = [&](int64_t count, const char* what, const char* between = ", ") {
    text += (text.empty() ? "" : between) + std::to_string(count) + what;
  };
  if (done > 0 || skipped + failed == 0) add(done, " done");
  if (skipped > 0) add(skipped, " skipped");
  if (failed > 0) add(failed, " failed: ");
  text += failures;
  if (list.notPictures > 0) add(list.notPictures, " not a picture", failed > 0 ? "; " : ", ");
  return text;
}

}  // namespace norv
