#include <algorithm>
#include <cstdio>

#include "kit/batch/batch.h"
#include "kit/batch/lanes.h"
#include "kit/failure.h"
#include "kit/guidance/json.h"
#include "kit/guidance/manner.h"
#include "kit/work/make_picture.h"
#include "platform/console.h"

namespace norv {
namespace {

struct Estimate {
  int64_t pictures = 0, skipped = 0, failing = 0;
  double alone = 0;                // seconds of those that work alone,
  double beside = 0;               // and of one core of those that work side by side
  uint64_t most = 0;               // bytes of the largest that works alone
  std::vector<uint64_t> memories;  // of each of the others

  double Seconds(int32_t threads) const {
    const double cores = std::min<double>(threads, static_cast<double>(memories.size()));
    return alone + beside / std::max(cores, 1.0);
  }
};

std::string InWords(double seconds) {
  char text[32];
  const char* unit = seconds < 120 ? "s" : seconds < 7200 ? "min" : "h";
  const double value = seconds < 120 ? seconds : seconds < 7200 ? seconds / 60 : seconds / 3600;
  std::snprintf(text, sizeof text, value < 10 ? "%.1f %s" : "%.0f %s", value, unit);
  return text;
}

void SayJob(const char* format, const std::string& a, const std::string& b) {
  if (!RunManner().json) Say("%s", (a + format + b + "\n").c_str());
}

// How the machine is shared, and what a picture that works then takes of it.
struct Machine {
  int32_t threads;
  uint64_t bound;
  bool bounded;  // by people
  bool single;   // there is one picture only

  int32_t ThreadsFor(const WorkPlan& plan) const {
    const int32_t wanted = single || WorksAlone(plan, threads) ? threads : 1;
    return bounded ? ThreadsWithin(plan, wanted, bound) : wanted;
  }
};

void Add(const WorkOrder& order, const Job& job, const Machine& machine, Estimate& all) {
  const WorkPlan plan = OpenForWork(order, job.input).plan;
  const int32_t threads = machine.ThreadsFor(plan);
  const uint64_t memory = plan.cost.Memory(threads);
  const double seconds = plan.cost.seconds / (plan.teams ? threads : 1);
  ++all.pictures;
  if (machine.single || threads > 1) {
    all.alone += seconds;
    all.most = std::max(all.most, memory);
  } else {
    all.beside += seconds;
    all.memories.push_back(memory);
  }
  SayJob(" -> ", job.input,
         job.output + ": " + std::to_string(plan.result.width) + " x " + std::to_string(plan.result.height) +
             " pixels, " + plan.method + ", about " + InWords(seconds) + ", " + BytesInWords(memory));
}

// The largest that may meet, as far as the bound lets them.
uint64_t PeakOf(std::vector<uint64_t> memories, int32_t threads, uint64_t bound) {
  std::ranges::sort(memories, std::greater());
  uint64_t peak = 0;
  for (size_t i = 0; i < memories.size() && i < static_cast<size_t>(threads); ++i)
    if (i == 0 || peak + memories[i] <= bound) peak += memories[i];
  return peak;
}

}  // namespace

void SayWhatWouldBeDone(const WorkOrder& order, const JobList& list, int32_t threads, uint64_t bound) {
  Estimate all;
  const Machine machine{threads, bound, !order.choice.memory.empty(), order.choice.folder.empty()};
  for (const Job& job : list.jobs) {
    if (job.state == Job::State::skipped) {
      ++all.skipped;
      continue;
    }
    try {
      if (job.state == Job::State::failed) throw Failure(job.error);
      Add(order, job, machine, all);
    } catch (...) {
      ++all.failing;
      SayJob(" would fail: ", job.input, FailureInWords());
    }
  }
  const double seconds = all.Seconds(threads);
  const uint64_t peak = std::max(all.most, PeakOf(all.memories, threads, bound));
  if (RunManner().json)
    return SayRow(JsonObject()
                      .Flag("dryRun", true)
                      .Whole("pictures", all.pictures)
                      .Whole("skipped", all.skipped)
                      .Whole("failing", all.failing)
                      .Whole("notPictures", list.notPictures)
                      .Number("seconds", seconds)
                      .Whole("memory", static_cast<int64_t>(peak)));
  Say("%lld to make, %lld skipped, %lld would fail, %lld not a picture: by estimate about %s on %d %s, and %s of "
      "memory\n",
      static_cast<long long>(all.pictures), static_cast<long long>(all.skipped), static_cast<long long>(all.failing),
      static_cast<long long>(list.notPictures), InWords(seconds).c_str(), threads, threads == 1 ? "core" : "cores",
      BytesInWords(peak).c_str());
}

}  // namespace norv
