#include "raster/separable.h"

#include <algorithm>
#include <cmath>

#include "platform/memory.h"
#include "raster/edges.h"
#include "raster/filters.h"

namespace norv {
namespace {

// One axis of a reduction: small pixel i gathers large pixels f*i - offset ... f*i - offset + L - 1, mirrored.
struct Reduction {
  int64_t f;
  int64_t offset;
  const matrix& kernel;

  Reduction(int32_t large, int32_t small, const matrix& taps)
      : f(large / small), offset((taps.mn - large / small) / 2), kernel(taps) {}

  int64_t Source(int64_t i, int64_t tap, int64_t large) const { return MirrorIndex(f * i - offset + tap, large); }
};

// A line of large pixels split into its f phases, so that one tap reads neighbouring elements for neighbouring small
// pixels: phase p holds the pixels -offset + p, -offset + p + f, ...
class PhaseLine {
 public:
  PhaseLine(const Reduction& axis, int32_t small)
      : axis_(axis), length_((small - 1) + (axis.kernel.mn - 1) / axis.f + 1), phases_(MakeAligned<float>(Size())) {}

  void Fill(const float* line, int64_t large) {
    for (int64_t p = 0; p < axis_.f; ++p)
      for (int64_t j = 0; j < length_; ++j) phases_[p * length_ + j] = line[axis_.Source(j, p, large)];
  }
  // Where tap i finds its pixel of small pixel 0.
  const float* Tap(int64_t i) const { return phases_.get() + i % axis_.f * length_ + i / axis_.f; }

 private:
  size_t Size() const { return static_cast<size_t>(axis_.f * length_); }
  const Reduction& axis_;
  int64_t length_;
  AlignedArray<float> phases_;
};

void AddScaled(float* y, const float* x, float s, int64_t n) {
  for (int64_t i = 0; i < n; ++i) y[i] += s * x[i];
}

void ReduceRows(matrix& result, const matrix& high, const Reduction& axis) {
  PhaseLine line(axis, result.m);
  result.fill(0);
  for (int32_t r = 0; r < high.n; ++r) {
    line.Fill(high.z[r], high.m);
    for (int32_t i = 0; i < axis.kernel.mn; ++i) AddScaled(result.z[r], line.Tap(i), axis.kernel.x[i], result.m);
  }
}

}  // namespace

void ShrinkMatrix(matrix& low, const matrix& high, const matrix& kernel) {
  if (low.mn == 0) return;
  const Reduction across(high.m, low.m, kernel), down(high.n, low.n, kernel);
  matrix narrow(low.m, high.n);
  ReduceRows(narrow, high, across);
  low.fill(0);
  for (int32_t r = 0; r < low.n; ++r)
    for (int32_t i = 0; i < kernel.mn; ++i)
      AddScaled(low.z[r], narrow.z[down.Source(r, i, high.n)], kernel.x[i], low.m);
}

void SpreadMatrix(matrix& high, const matrix& low, const matrix& kernel) {
  if (low.mn == 0) return;
  const Reduction across(high.m, low.m, kernel), down(high.n, low.n, kernel);
  matrix narrow(low.m, high.n);
  narrow.fill(0);
  for (int32_t r = 0; r < low.n; ++r)
    for (int32_t i = 0; i < kernel.mn; ++i)
      AddScaled(narrow.z[down.Source(r, i, high.n)], low.z[r], kernel.x[i], low.m);
  high.fill(0);
  for (int32_t r = 0; r < high.n; ++r)
    for (int32_t c = 0; c < low.m; ++c)
      for (int32_t i = 0; i < kernel.mn; ++i) high.z[r][across.Source(c, i, high.m)] += kernel.x[i] * narrow.z[r][c];
}

// ------------------------------------------------------------------------------------------------- resampling

void LanczosWeights(ResampleTable& table, int32_t length, int32_t taps, double a, double step, double offset,
                    bool widen) {
  const int32_t half = (taps - 1) / 2;
  const double scale = widen && step > 1 ? 1 / step : 1;
  table.taps = taps;
  table.start.resize(static_cast<size_t>(length));
  table.weights.resize(static_cast<size_t>(length) * static_cast<size_t>(taps));
  for (int32_t k = 0; k < length; ++k) {
    const double position = k * step + offset, whole = std::trunc(position);
    float* weights = &table.weights[static_cast<size_t>(k) * static_cast<size_t>(taps)];
    table.start[k] = static_cast<int32_t>(whole) - half;
    float sum = 0;
    for (int32_t j = 0; j < taps; ++j) {
      weights[j] = static_cast<float>(LanczosKernel(((j - half) - (position - whole)) * scale, a));
      sum += weights[j];
    }
    if (sum == 0) continue;
    const float inverse = 1 / sum;
    for (int32_t j = 0; j < taps; ++j) weights[j] *= inverse;
  }
}

ResampleTable EnlargementTable(int32_t length, int32_t f) {
  ResampleTable table;
  const int32_t enlarged = static_cast<int32_t>(static_cast<double>(length) * f + 0.5);
  LanczosWeights(table, enlarged, 9, 3.0, 1.0 / f, (1.0 / f - 1) / 2, false);
  return table;
}

namespace {

// The taps of one output position that count: source pixels first, first + 1, ... with their weights; the sum is
// divided by `divisor` where taps were cut off at the axis' ends.
struct Reach {
  int64_t first = 0;
  int64_t count = 0;
  const float* weights = nullptr;
  float divisor = 1;
};

Reach ReachOf(const ResampleTable& table, int32_t k, int64_t length) {
  const float* weights = &table.weights[static_cast<size_t>(k) * static_cast<size_t>(table.taps)];
  int64_t begin = 0, end = table.taps;
  while (begin < end && weights[begin] == 0) ++begin;
  while (begin < end && weights[end - 1] == 0) --end;
  const int64_t start = table.start[k];
  const int64_t inside = std::clamp<int64_t>(-start, begin, end), limit = std::clamp(length - start, inside, end);
  Reach reach{start + inside, limit - inside, weights + inside, 1};
  if (inside == begin && limit == end) return reach;
  float sum = 0;
  for (int64_t j = inside; j < limit; ++j) sum += weights[j];
  if (sum > 0) reach.divisor = sum;
  return reach;
}

// y[i] = the sum over the reach of weight times the line `stride` elements further on, for n elements.
void Gather(float* y, const float* lines, int64_t stride, const Reach& reach, int64_t n) {
  std::fill_n(y, n, 0.0f);
  for (int64_t j = 0; j < reach.count; ++j) AddScaled(y, lines + (reach.first + j) * stride, reach.weights[j], n);
  if (reach.divisor != 1)
    for (int64_t i = 0; i < n; ++i) y[i] /= reach.divisor;
}

// Rows are resampled side by side, so that the arithmetic runs on neighbouring elements.
constexpr int64_t kRowsAtOnce = 16;

void ResampleRows(const matrix& plane, matrix& result, const ResampleTable& table) {
  std::vector<Reach> reaches;
  for (int32_t k = 0; k < table.Length(); ++k) reaches.push_back(ReachOf(table, k, plane.m));
  const auto lines = MakeAligned<float>(static_cast<size_t>(plane.m * kRowsAtOnce));
  std::fill_n(lines.get(), plane.m * kRowsAtOnce, 0.0f);
  float sums[kRowsAtOnce];
  for (int32_t r0 = 0; r0 < plane.n; r0 += kRowsAtOnce) {
    const int64_t rows = std::min<int64_t>(kRowsAtOnce, plane.n - r0);
    for (int64_t r = 0; r < rows; ++r)
      for (int32_t c = 0; c < plane.m; ++c) lines[c * kRowsAtOnce + r] = plane.z[r0 + r][c];
    for (int32_t k = 0; k < table.Length(); ++k) {
      Gather(sums, lines.get(), kRowsAtOnce, reaches[k], kRowsAtOnce);
      for (int64_t r = 0; r < rows; ++r) result.z[r0 + r][k] = sums[r];
    }
  }
}

}  // namespace

void ResampleSeparable(const matrix& plane, matrix& result, const ResampleTable& horizontal,
                       const ResampleTable& vertical) {
  matrix wide(plane.mn == 0 ? 0 : horizontal.Length(), plane.n);
  if (wide.mn != 0) ResampleRows(plane, wide, horizontal);
  result.dim(wide.m, wide.mn == 0 ? 0 : vertical.Length());
  for (int32_t k = 0; k < result.n; ++k) Gather(result.z[k], wide.x, wide.m, ReachOf(vertical, k, wide.n), result.m);
}

}  // namespace norv
