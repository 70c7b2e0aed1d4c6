#include "denoise/component_filter.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "denoise/patch_plane.h"
#include "platform/progress.h"
#include "platform/team.h"

namespace norv {
namespace {

constexpr int64_t kStripRows = 16;   // rows of patches that one thread works on at a time
constexpr int64_t kWave = 64;        // strips whose sums are in memory at once
constexpr int32_t kTile = 16;        // neighbouring patches in a tile
constexpr double kThreshold = 2.75;  // in standard deviations of the noise

typedef float Eight __attribute__((vector_size(32)));
typedef float EightAnywhere __attribute__((vector_size(32), aligned(4), may_alias));

Eight Load(const float* p) { return *reinterpret_cast<const EightAnywhere*>(p); }
void Store(float* p, Eight v) { *reinterpret_cast<EightAnywhere*>(p) = v; }

// The components in the two orders in which the products read them, padded to fours.
struct Basis {
  int32_t side, length, kept;
  int64_t keptStride, lengthStride;
  std::vector<float> byTap;        // [tap][component]
  std::vector<float> byComponent;  // [component][tap]
  std::vector<float> mean;         // [tap]
  std::vector<float> meanCoefficient;

  Basis(const matrix& components, const ComponentSettings& settings)
      : side(settings.side),
        length(side * side),
        kept(settings.kept > 0 ? std::min(settings.kept, length) : length),
        keptStride((kept + 3) / 4 * 4),
        lengthStride((length + 3) / 4 * 4),
        byTap(static_cast<size_t>(length * keptStride)),
        byComponent(static_cast<size_t>(kept * lengthStride)),
        mean(components.z[0], components.z[0] + length),
        meanCoefficient(static_cast<size_t>(keptStride)) {
    mean.resize(static_cast<size_t>(lengthStride));
    for (int32_t k = 0; k < kept; ++k) {
      for (int32_t i = 0; i < length; ++i) {
        const float value = components.z[k + 1][i];
        byTap[i * keptStride + k] = byComponent[k * lengthStride + i] = value;
        meanCoefficient[k] += value * mean[i];
      }
    }
  }
};

// Coefficients of a tile of patches, kTile a component.
using Coefficients = std::vector<float>;

// Works on the rows of patches of one strip.
class ComponentFilter {
 public:
  ComponentFilter(const Basis& basis, const PatchPlane& noisy, const PatchPlane* pilot, double sigma)
      : basis_(basis),
        noisy_(noisy),
        pilot_(pilot),
        threshold_(static_cast<float>(kThreshold * sigma)),
        variance_(static_cast<float>(sigma * sigma)),
        coefficients_(static_cast<size_t>(basis.keptStride * kTile)),
        guides_(pilot ? coefficients_.size() : 0) {}

  void Run(int64_t firstRow, int64_t endRow, PatchSums& sums) {
    const int32_t places = noisy_.width - basis_.side + 1;
    sums.Reset(noisy_, firstRow, endRow + basis_.side - 1);
    for (int64_t r = firstRow; r < endRow; ++r) {
      for (int32_t c = 0; c < places; c += kTile) {
        Transform(noisy_, r, c, coefficients_);
        if (pilot_) Transform(*pilot_, r, c, guides_);
        float weight[kTile];
        pilot_ ? ShrinkByGuide(weight) : Cut(weight);
        std::fill(weight + std::min(kTile, places - c), weight + kTile, 0.0f);
        AddPatches(r, c, weight, sums);
      }
    }
  }

 private:
  // The patches at (row, column), (row, column + 1) ... in the components, the mean patch taken off.
  void Transform(const PatchPlane& plane, int64_t row, int64_t column, Coefficients& out) const {
    for (int64_t k = 0; k < basis_.keptStride; k += 4) {
      Eight sum[4][2] = {};
      const float* factor = basis_.byTap.data() + k;
      for (int32_t i = 0; i < basis_.side; ++i) {
        const float* value = plane.Row(row + i) + column;
        for (int32_t j = 0; j < basis_.side; ++j, factor += basis_.keptStride) {
          const Eight low = Load(value + j), high = Load(value + j + 8);
          for (int n = 0; n < 4; ++n) {
            sum[n][0] += factor[n] * low;
            sum[n][1] += factor[n] * high;
          }
        }
      }
      for (int n = 0; n < 4; ++n) {
        Store(out.data() + (k + n) * kTile, sum[n][0] - basis_.meanCoefficient[k + n]);
        Store(out.data() + (k + n) * kTile + 8, sum[n][1] - basis_.meanCoefficient[k + n]);
      }
    }
  }

  // Small coefficients become 0; a patch weighs the more, the fewer are left.
  void Cut(float* weight) {
    std::fill_n(weight, kTile, 1.0f);
    for (int32_t k = 0; k < basis_.kept; ++k) {
      float* c = coefficients_.data() + k * kTile;
      for (int32_t x = 0; x < kTile; ++x) {
        const bool keep = std::abs(c[x]) > threshold_;
        c[x] = keep ? c[x] : 0.0f;
        weight[x] += keep ? 1.0f : 0.0f;
      }
    }
    for (int32_t x = 0; x < kTile; ++x) weight[x] = 1 / weight[x];
  }

  void ShrinkByGuide(float* weight) {
    std::fill_n(weight, kTile, 1.0f);
    for (int32_t k = 0; k < basis_.kept; ++k) {
      float* c = coefficients_.data() + k * kTile;
      const float* guide = guides_.data() + k * kTile;
      for (int32_t x = 0; x < kTile; ++x) {
        const float square = guide[x] * guide[x], factor = square / (square + variance_);
        c[x] *= factor;
        weight[x] += factor * factor;
      }
    }
    for (int32_t x = 0; x < kTile; ++x) weight[x] = 1 / weight[x];
  }

  // Turns the coefficients back into patches and adds these with their weights.
  void AddPatches(int64_t row, int64_t column, const float* weight, PatchSums& sums) {
    active_.clear();
    for (int32_t k = 0; k < basis_.kept; ++k) {
      const float* c = coefficients_.data() + k * kTile;
      if (std::any_of(c, c + kTile, [](float value) { return value != 0; })) active_.push_back(k);
    }
    const Eight weights[2] = {Load(weight), Load(weight + 8)};
    for (int64_t tap = 0; tap < basis_.lengthStride; tap += 4) {
      Eight sum[4][2];
      for (int n = 0; n < 4; ++n) sum[n][0] = sum[n][1] = Eight{} + basis_.mean[tap + n];
      for (const int32_t k : active_) {
        const Eight low = Load(coefficients_.data() + k * kTile), high = Load(coefficients_.data() + k * kTile + 8);
        const float* factor = basis_.byComponent.data() + k * basis_.lengthStride + tap;
        for (int n = 0; n < 4; ++n) {
          sum[n][0] += factor[n] * low;
          sum[n][1] += factor[n] * high;
        }
      }
      for (int64_t n = 0; n < 4 && tap + n < basis_.length; ++n) {
        const int64_t i = (tap + n) / basis_.side, j = (tap + n) % basis_.side;
        float *values = sums.Values(row + i) + column + j, *total = sums.Weights(row + i) + column + j;
        for (int half = 0; half < 2; ++half) {
          Store(values + 8 * half, Load(values + 8 * half) + weights[half] * sum[n][half]);
          Store(total + 8 * half, Load(total + 8 * half) + weights[half]);
        }
      }
    }
  }

  const Basis& basis_;
  const PatchPlane& noisy_;
  const PatchPlane* pilot_;
  float threshold_, variance_;
  Coefficients coefficients_, guides_;
  std::vector<int32_t> active_;
};

// One pass over all patches: by the threshold, or guided by a pilot.
void Pass(const Basis& basis, const PatchPlane& noisy, const PatchPlane* pilot, double sigma, int threads,
          Progress& progress, PatchPlane& result) {
  const int64_t rows = noisy.height - basis.side + 1, count = (rows + kStripRows - 1) / kStripRows;
  PatchSums total;
  total.Reset(noisy, 0, noisy.height);
  for (int64_t wave = 0; wave < count; wave += kWave) {
    std::vector<PatchSums> strips(static_cast<size_t>(std::min(kWave, count - wave)));
    ParallelRanges(threads, static_cast<int64_t>(strips.size()), [&](int64_t begin, int64_t end) {
      ComponentFilter filter(basis, noisy, pilot, sigma);
      for (int64_t i = begin; i < end; ++i) {
        const int64_t row = (wave + i) * kStripRows;
        filter.Run(row, std::min(row + kStripRows, rows), strips[i]);
        progress.Advance();
      }
    });
    // In the order of the strips, whoever made them.
    for (const PatchSums& strip : strips) strip.AddTo(total);
  }
  total.Finish(result);
}

}  // namespace

void FilterByComponents(matrix& plane, double sigma, const matrix& components, const ComponentSettings& settings) {
  const Basis basis(components, settings);
  const PatchPlane noisy(plane);
  PatchPlane result(plane.m, plane.n);
  const int64_t strips = (plane.n - settings.side + kStripRows) / kStripRows;
  Progress progress("Denoising", settings.hard ? strips : 2 * strips);
  Pass(basis, noisy, nullptr, sigma, settings.threads, progress, result);
  if (!settings.hard) {
    const PatchPlane pilot = result;
    Pass(basis, noisy, &pilot, sigma, settings.threads, progress, result);
  }
  result.CopyTo(plane);
}

}  // namespace norv
