#include "denoise/group_filter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include "denoise/low_rank.h"
#include "denoise/patch_plane.h"
#include "denoise/patch_search.h"
#include "platform/progress.h"

namespace norv {
namespace {

constexpr int64_t kGroupRows = 8;    // rows of groups that one thread works on at a time
constexpr int32_t kSearchEvery = 2;  // iterations
constexpr int32_t kFewest = 20;      // patches in a group

// How the groups are made, by the noise: the values of the published experiments (Gu et al. 2017), but for the window
// and step of the faster search.
struct GroupPlan {
  int32_t count;     // patches in a group at first
  double remaining;  // share of the noise that is taken to be left, of what the residual does not explain
  int32_t step;      // between the patches that groups are made around
  SearchWindow window;
};

GroupPlan PlanFor(double sigma, const GroupSettings& settings) {
  const int level = sigma <= 20 ? 0 : sigma <= 40 ? 1 : sigma <= 60 ? 2 : 3;
  constexpr int32_t kCount[] = {70, 90, 120, 140};
  constexpr double kRemaining[] = {0.54, 0.56, 0.58, 0.58};
  const int32_t step = settings.twoStep ? settings.side * 2 / 3 : settings.side / 2;
  GroupPlan plan{kCount[level], kRemaining[level], step, {settings.twoStep ? 12 : 20, 1}};
  return plan;
}

// 0, step, 2 step ... and the last place of a patch on an axis.
std::vector<int32_t> Places(int32_t length, int32_t side, int32_t step) {
  std::vector<int32_t> places;
  for (int32_t place = 0; place < length - side; place += step) places.push_back(place);
  places.push_back(length - side);
  return places;
}

// One plane on its way through the iterations.
struct Job {
  matrix* target;
  float sigma;
  GroupPlan plan;
  PatchPlane noisy, current;
  std::vector<int32_t> rows, columns;
  std::vector<std::vector<uint32_t>> groups;  // by row and column of their middle patch
  PatchSums total;

  Job(const NoisyPlane& noisyPlane, const GroupSettings& settings)
      : target(noisyPlane.plane),
        sigma(static_cast<float>(noisyPlane.sigma)),
        plan(PlanFor(noisyPlane.sigma, settings)),
        noisy(*noisyPlane.plane),
        current(noisy),
        rows(Places(noisy.height, settings.side, plan.step)),
        columns(Places(noisy.width, settings.side, plan.step)),
        groups(rows.size() * columns.size()) {}
};

struct Strip {
  Job* job;
  int64_t firstRow, endRow;  // indices of the job's rows
};

class GroupFilter {
 public:
  GroupFilter(const GroupSettings& settings, int32_t iteration)
      : settings_(settings), iteration_(iteration), search_(iteration % kSearchEvery == 0) {}

  void Run(const Strip& strip, PatchSums& sums) const {
    Job& job = *strip.job;
    const int32_t reach = job.plan.window.radius;
    const int64_t first = std::max(job.rows[strip.firstRow] - reach, 0);
    const int64_t end = std::min(job.rows[strip.endRow - 1] + reach + settings_.side, job.noisy.height);
    sums.Reset(job.noisy, first, end);
    PatchSearch search(job.current, settings_.side, job.plan.window);
    LowRank lowRank;
    std::vector<float> patches;
    const int32_t count = std::max(job.plan.count - 10 * (iteration_ / kSearchEvery), kFewest);
    for (int64_t r = strip.firstRow; r < strip.endRow; ++r) {
      for (size_t c = 0; c < job.columns.size(); ++c) {
        std::vector<uint32_t>& group = job.groups[r * job.columns.size() + c];
        if (search_) search.Find(job.rows[r], job.columns[c], count, group);
        const float sigma = NoiseLeft(job, job.rows[r], job.columns[c]);
        Gather(job.current, group, patches);
        const int32_t rank =
            lowRank.Approximate(patches.data(), settings_.side * settings_.side, static_cast<int32_t>(group.size()),
                                sigma, static_cast<float>(settings_.strength));
        Scatter(job.current.stride, group, patches, WeightOf(rank, group), sums);
      }
    }
  }

 private:
  // What is still noise in the patch at (row, column): all of it at first, then what the residual leaves unexplained.
  float NoiseLeft(const Job& job, int32_t row, int32_t column) const {
    if (iteration_ == 0) return job.sigma;
    float removed = 0;
    for (int32_t i = 0; i < settings_.side; ++i) {
      const float *noisy = job.noisy.Row(row + i) + column, *current = job.current.Row(row + i) + column;
      for (int32_t j = 0; j < settings_.side; ++j) removed += (noisy[j] - current[j]) * (noisy[j] - current[j]);
    }
    removed /= static_cast<float>(settings_.side * settings_.side);
    return static_cast<float>(job.plan.remaining) * std::sqrt(std::abs(job.sigma * job.sigma - removed));
  }

  // Falls evenly from 1 for the mean patch alone to almost nothing for the full rank.
  float WeightOf(int32_t rank, const std::vector<uint32_t>& group) const {
    if (!settings_.ranked) return 1.0f;
    const int32_t full = std::min(static_cast<int32_t>(group.size()), settings_.side * settings_.side);
    return static_cast<float>(full + 1 - rank) / static_cast<float>(full + 1);
  }

  void Gather(const PatchPlane& plane, const std::vector<uint32_t>& group, std::vector<float>& patches) const {
    patches.resize(group.size() * settings_.side * settings_.side);
    float* out = patches.data();
    for (const uint32_t offset : group)
      for (int32_t i = 0; i < settings_.side; ++i, out += settings_.side)
        std::copy_n(plane.values.data() + offset + i * plane.stride, settings_.side, out);
  }

  void Scatter(int64_t stride, const std::vector<uint32_t>& group, const std::vector<float>& patches, float weight,
               PatchSums& sums) const {
    const float* in = patches.data();
    for (const uint32_t offset : group) {
      const int64_t row = offset / stride, column = offset % stride;
      for (int32_t i = 0; i < settings_.side; ++i, in += settings_.side) {
        float *values = sums.Values(row + i) + column, *weights = sums.Weights(row + i) + column;
        for (int32_t j = 0; j < settings_.side; ++j) {
          values[j] += weight * in[j];
          weights[j] += weight;
        }
      }
    }
  }

  const GroupSettings& settings_;
  int32_t iteration_;
  bool search_;
};

// current += feedback * (noisy - current)
void FeedBack(Job& job, float feedback, int threads) {
  ParallelFor(threads, static_cast<int64_t>(job.current.values.size()),
              [&](int64_t i) { job.current.values[i] += feedback * (job.noisy.values[i] - job.current.values[i]); });
}

}  // namespace

void FilterGroups(const std::vector<NoisyPlane>& planes, const GroupSettings& settings) {
  std::vector<std::unique_ptr<Job>> jobs;
  std::vector<Strip> strips;
  for (const NoisyPlane& plane : planes) {
    if (plane.sigma == 0 || std::min(plane.plane->m, plane.plane->n) < settings.side) continue;
    jobs.push_back(std::make_unique<Job>(plane, settings));
    Job* job = jobs.back().get();
    if (job->noisy.values.size() > std::numeric_limits<uint32_t>::max()) throw "the image is too large for groups";
    const int64_t rows = static_cast<int64_t>(job->rows.size());
    for (int64_t r = 0; r < rows; r += kGroupRows) strips.push_back({job, r, std::min(r + kGroupRows, rows)});
  }
  const int64_t count = static_cast<int64_t>(strips.size());
  Progress progress("Denoising", settings.iterations * count);
  for (int32_t iteration = 0; iteration < settings.iterations; ++iteration) {
    for (auto& job : jobs) {
      FeedBack(*job, static_cast<float>(settings.feedback), settings.threads);
      job->total.Reset(job->noisy, 0, job->noisy.height);
    }
    const GroupFilter filter(settings, iteration);
    const auto run = [&](int64_t i, PatchSums& sums) {
      filter.Run(strips[i], sums);
      progress.Advance();
    };
    SumStrips(settings.threads, count, run, [&](int64_t i) -> PatchSums& { return strips[i].job->total; });
    for (auto& job : jobs) job->total.Finish(job->current, settings.threads);
  }
  for (auto& job : jobs) job->current.CopyTo(*job->target);
}

}  // namespace norv
