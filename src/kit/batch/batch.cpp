#include "kit/batch/batch.h"

#include <atomic>
#include <filesystem>

#include "kit/batch/lanes.h"
#include "kit/failure.h"
#include "kit/guidance/json.h"
#include "kit/guidance/manner.h"
#include "kit/work/make_picture.h"
#include "kit/work/reported.h"
#include "linear/matrix2.h"
#include "platform/memory.h"
#include "platform/native/before_rename.h"
#include "platform/native/native_file.h"
#include "platform/progress.h"
#include "platform/threads/crew.h"

namespace norv {
namespace {

namespace fs = std::filesystem;

int64_t BytesToDo(const std::vector<Job>& jobs) {
  int64_t bytes = 0;
  for (const Job& job : jobs)
    if (job.state == Job::State::toDo) bytes += job.bytes;
  return bytes;
}

// A picture's share of the progress of all, by the bytes of its file.
class Share {
 public:
  Share(Progress& all, int64_t bytes) : all_(all), bytes_(bytes) {}
  ~Share() { Reach(bytes_); }
  Share(const Share&) = delete;
  Share& operator=(const Share&) = delete;

  void Advance(int32_t rows, int32_t height) {
    rows_ += rows;
    Reach(static_cast<int64_t>(static_cast<double>(bytes_) * rows_ / height));
  }

 private:
  void Reach(int64_t bytes) {
    all_.Advance(bytes - reached_);
    reached_ = bytes;
  }

  Progress& all_;
  int64_t bytes_, reached_ = 0;
  int32_t rows_ = 0;
};

class Batch {
 public:
  Batch(const WorkOrder& order, const JobList& list, const Journal& journal, int32_t threads, uint64_t bound)
      : order_(order),
        jobs_(list.jobs),
        journal_(journal),
        lanes_(threads, bound, !order.choice.memory.empty()),
        tried_(list.jobs.size()),
        progress_(order.work.doing ? order.work.doing : "Working", BytesToDo(list.jobs)) {}

  // Until nothing is left; several threads at a time.
  void Work() {
    for (int64_t turn; (turn = next_++) < static_cast<int64_t>(jobs_.size());) {
      const Job& job = jobs_[static_cast<size_t>(turn)];
      if (job.state == Job::State::skipped) {
        lanes_.Pass(turn);
        continue;
      }
      Made& made = tried_[static_cast<size_t>(turn)];
      made = Tried(job, turn);
      if (RunManner().json) SayRow(RowOf(made), made.Failed());
    }
  }

  std::vector<Made> Tried() {
    std::erase_if(tried_, [](const Made& made) { return made.input.empty(); });
    return std::move(tried_);
  }

 private:
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
    Share share(progress_, job.bytes);
    JournalEntry entry = EntryOf(order_, job);
    OpenedPicture picture = OpenForWork(order_, job.input);
    entered = true;
    const Lanes::Place place(lanes_, turn, picture.plan);
    if (place.IsFirst()) ForgetPeakMemory();
    picture.replace = job.replace;
    picture.advanced = [&share](int32_t rows, int32_t height) { share.Advance(rows, height); };
    fs::create_directories(fs::path(job.output).parent_path());
    const std::string target = FinalTarget(job.output);
    const BeforeRename note([&](const std::string& temporary, const std::string& destination) {
      if (destination != target) return;
      entry.ofOutput = MarkOf(temporary);
      journal_.Add(job.name, entry);
    });
    return MakePicture(order_, std::move(picture), job.output, place.Threads());
  }

  const WorkOrder& order_;
  const std::vector<Job>& jobs_;
  const Journal& journal_;
  Lanes lanes_;
  std::vector<Made> tried_;
  Progress progress_;
  const ProgressCover cover_;  // of all that begins behind it
  std::atomic<int64_t> next_{0};
};

std::string InWords(const Made& made) {
  return made.error.starts_with(made.input) ? made.error : made.input + ": " + made.error;
}

}  // namespace

std::vector<Made> RunJobs(const WorkOrder& order, const JobList& list, const Journal& journal, int32_t threads,
                          uint64_t bound) {
  Batch batch(order, list, journal, threads, bound);
  SideBySide(threads, [&batch] { batch.Work(); });
  return batch.Tried();
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
