#include "restore/terms/orientation_field.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "platform/memory.h"
#include "simd/math/math.h"
#include "simd/resample/kernels.h"

namespace norv {
namespace {

constexpr int32_t kComponents = 3;  // of the symmetric tensor

// Folded smoothing looks at all rows from everywhere.
int64_t ReachOf(const SmoothingTaps& down, int64_t height) {
  const bool folded = down.offsets.front() == 0 && down.offsets.back() > 0;
  return folded ? height : down.offsets.back();
}

// Tensor rows smoothed along themselves, as many as smoothing along columns needs at a time.
class TensorRows {
 public:
  // For smoothed rows from `first` on.
  TensorRows(const matrix& x, const SmoothingTaps& across, const SmoothingTaps& down, int64_t first)
      : x_(x),
        across_(across),
        reach_(down.offsets.back()),
        kept_(static_cast<int32_t>(std::min<int64_t>(x.n, down.offsets.back() - down.offsets.front() + 1))),
        before_(-across.offsets.front()),
        behind_(across.offsets.back()),
        ring_(MakeAligned<float>(static_cast<size_t>(kComponents) * kept_ * x.m)),
        taken_(across.offsets.size()),
        made_(std::max<int64_t>(first - ReachOf(down, x.n), 0)) {
    for (auto& line : lines_) line = MakeAligned<float>(static_cast<size_t>(before_ + x.m + behind_));
  }

  const float* Row(int32_t component, int64_t r) const {
    return ring_.get() + (component * int64_t{kept_} + r % kept_) * x_.m;
  }
  // Makes every row that the smoothed row r needs.
  void Provide(int64_t r) {
    for (; made_ < x_.n && made_ <= r + reach_; ++made_) Make(made_);
  }

 private:
  void Make(int64_t r) {
    const RestoreKernels& kernels = ActiveRestoreKernels();
    std::array<float*, kComponents> line;
    for (int32_t k = 0; k < kComponents; ++k) line[k] = lines_[k].get() + before_;
    ForCells(x_, static_cast<int32_t>(r), [&](CellRow cells, int64_t c, int64_t n) {
      kernels.tensor(line[0] + c, line[1] + c, line[2] + c, cells, n);
    });
    for (int32_t k = 0; k < kComponents; ++k) {
      for (int64_t i = -before_; i < 0; ++i) line[k][i] = line[k][MirrorIndex(i, x_.m)];
      for (int64_t i = x_.m; i < x_.m + behind_; ++i) line[k][i] = line[k][MirrorIndex(i, x_.m)];
      for (size_t t = 0; t < taken_.size(); ++t) taken_[t] = line[k] + across_.offsets[t];
      ActiveResampleKernels().combineRows(const_cast<float*>(Row(k, r)), taken_.data(), across_.weights.data(),
                                          static_cast<int64_t>(taken_.size()), x_.m);
    }
  }

  const matrix& x_;
  const SmoothingTaps& across_;
  int64_t reach_;
  int32_t kept_;
  int64_t before_, behind_;
  AlignedArray<float> ring_;
  std::array<AlignedArray<float>, kComponents> lines_;
  std::vector<const float*> taken_;
  int64_t made_;
};

void FindRows(OrientationField& field, const matrix& x, const SmoothingTaps& across, const SmoothingTaps& down,
              Range which) {
  TensorRows tensor(x, across, down, which.begin);
  const int64_t count = std::ssize(down.offsets);
  std::vector<const float*> rows(down.offsets.size());
  auto smoothed = MakeAligned<float>(static_cast<size_t>(kComponents) * x.m);
  for (int64_t r = which.begin; r < which.end; ++r) {
    tensor.Provide(r);
    for (int32_t k = 0; k < kComponents; ++k) {
      for (int64_t t = 0; t < count; ++t) rows[t] = tensor.Row(k, MirrorIndex(r + down.offsets[t], x.n));
      ActiveResampleKernels().combineRows(smoothed.get() + int64_t{k} * x.m, rows.data(), down.weights.data(), count,
                                          x.m);
    }
    const float* j = smoothed.get();
    ActiveRestoreKernels().direction(field.u1.z[r], field.u2.z[r], j, j + x.m, j + 2 * int64_t{x.m}, x.m);
  }
}

double SmoothingOf(double scale, int32_t width, int32_t height) {
  return scale > 0 ? std::min(scale, 100.0 * std::max(width, height)) : 0;
}

}  // namespace

SmoothingTaps GaussianTaps(double scale, int64_t n) {
  const int64_t radius = static_cast<int64_t>(std::ceil(3 * scale)), period = std::max<int64_t>(2 * (n - 1), 1);
  const bool folded = 2 * radius + 1 > period;
  SmoothingTaps taps;
  std::vector<double> weights(static_cast<size_t>(folded ? period : 2 * radius + 1), 0.0);
  double sum = 0;
  for (int64_t d = -radius; d <= radius; ++d) {
    const double position = static_cast<double>(d) / scale, weight = d == 0 ? 1 : Exp(-0.5 * position * position);
    weights[folded ? (d % period + period) % period : d + radius] += weight;
    sum += weight;
  }
  for (size_t i = 0; i < weights.size(); ++i) {
    taps.offsets.push_back(static_cast<int64_t>(i) - (folded ? 0 : radius));
    taps.weights.push_back(static_cast<float>(weights[i] / sum));
  }
  return taps;
}

void FindOrientation(OrientationField& field, const matrix& x, double scale, StandingTeam& team, Range rows) {
  field.u1.dim(x.m, x.n);
  field.u2.dim(x.m, x.n);
  if (x.mn == 0) return;
  const double smoothing = SmoothingOf(scale, x.m, x.n);
  const SmoothingTaps across = GaussianTaps(smoothing, x.m), down = GaussianTaps(smoothing, x.n);
  // Every part makes the tensor of the rows around it once more.
  const Range which = RowsWithin(rows, x.n);
  const int64_t least = std::max(kPixelsWorthACut / x.m + 1, 4 * ReachOf(down, x.n));
  team.ForParts(which.end - which.begin, least, [&](int64_t begin, int64_t end) {
    FindRows(field, x, across, down, {which.begin + begin, which.begin + end});
  });
}

Range OrientationSources(Range rows, double scale, int32_t width, int32_t height) {
  const int64_t reach = ReachOf(GaussianTaps(SmoothingOf(scale, width, height), height), height);
  return RowsWithin({rows.begin - reach, rows.end + reach + 1}, height);
}

}  // namespace norv
