#include "raster/separable.h"

#include <algorithm>
#include <cmath>

#include "platform/memory.h"
#include "raster/edges.h"
#include "raster/filters.h"
#include "simd/resample/kernels.h"

namespace norv {
namespace {

// One axis of a reduction: small pixel i gathers large pixels f*i - offset ... f*i - offset + L - 1, mirrored.
struct Reduction {
  int64_t f;
  int64_t offset;
  const matrix& taps;

  Reduction(int64_t factor, const matrix& filter) : f(factor), offset((filter.mn - factor) / 2), taps(filter) {}

  int64_t Source(int64_t i, int64_t tap, int64_t large) const { return MirrorIndex(f * i - offset + tap, large); }
};

// A line of large pixels split into its f phases, so that one tap reads neighbouring elements for neighbouring small
// pixels: phase p holds the pixels -offset + p, -offset + p + f, ...
class PhaseLine {
 public:
  PhaseLine(const Reduction& axis, int32_t small)
      : axis_(axis), length_((small - 1) + (axis.taps.mn - 1) / axis.f + 1), phases_(MakeAligned<float>(Size())) {}

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

}  // namespace

void ShrinkMatrix(matrix& low, const matrix& high, const matrix& taps) {
  if (low.mn == 0) return;
  matrix narrow(low.m, high.n);
  ShrinkAlongRows(narrow, high, high.m / low.m, taps);
  ShrinkAlongColumns(low, narrow, high.n / low.n, taps, 0);
}

void ShrinkAlongRows(matrix& narrow, const matrix& high, int32_t f, const matrix& taps) {
  const Reduction axis(f, taps);
  PhaseLine line(axis, narrow.m);
  std::vector<const float*> pixels;
  for (int32_t i = 0; i < taps.mn; ++i) pixels.push_back(line.Tap(i));
  for (int32_t r = 0; r < high.n; ++r) {
    line.Fill(high.z[r], axis.f * narrow.m);
    ActiveResampleKernels().combineRows(narrow.z[r], pixels.data(), taps.x, taps.mn, narrow.m);
  }
}

void ShrinkAlongColumns(matrix& low, const PlaneWindow& narrow, int32_t f, const matrix& taps, int32_t first) {
  const Reduction axis(f, taps);
  std::vector<const float*> rows(static_cast<size_t>(taps.mn));
  for (int32_t r = 0; r < low.n; ++r) {
    for (int32_t i = 0; i < taps.mn; ++i) rows[i] = narrow.Row(axis.Source(first + r, i, narrow.height));
    ActiveResampleKernels().combineRows(low.z[r], rows.data(), taps.x, taps.mn, low.m);
  }
}

AxisPart ShrinkSource(int32_t f, const matrix& taps, int32_t length, AxisPart output) {
  const Reduction axis(f, taps);
  const int64_t first = axis.f * output.first - axis.offset;
  const int64_t last = axis.f * (int64_t{output.first} + output.count - 1) - axis.offset + taps.mn - 1;
  // Filters are symmetric, so that what is mirrored at an end lies between these two.
  const int64_t inside = std::max<int64_t>(first, 0), end = std::min<int64_t>(last + 1, length);
  return {static_cast<int32_t>(inside), static_cast<int32_t>(end - inside)};
}

// ------------------------------------------------------------------------------------------------- resampling

void LanczosWeights(ResampleTable& table, int32_t length, int32_t taps, double a, double step, double offset,
                    bool widen, int32_t first) {
  const int32_t half = (taps - 1) / 2;
  const double scale = widen && step > 1 ? 1 / step : 1;
  table.taps = taps;
  table.start.resize(static_cast<size_t>(length));
  table.weights.resize(static_cast<size_t>(length) * static_cast<size_t>(taps));
  for (int32_t k = 0; k < length; ++k) {
    const double position = (first + k) * step + offset, whole = std::trunc(position);
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
  return EnlargementTablePart(f, 0, static_cast<int32_t>(static_cast<double>(length) * f + 0.5));
}

ResampleTable EnlargementTablePart(int32_t f, int32_t first, int32_t count) {
  ResampleTable table;
  LanczosWeights(table, count, 9, 3.0, 1.0 / f, (1.0 / f - 1) / 2, false, first);
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

// Sums over the lines that reaches name. Keeps its scratch.
class LineGatherer {
 public:
  // y[i] = the sum over the reach of weight times element i of its lines, for n elements; line(j) is source line j.
  template <typename Line>
  void Gather(float* y, const Line& line, const Reach& reach, int64_t n) {
    lines_.clear();
    for (int64_t j = 0; j < reach.count; ++j) lines_.push_back(line(reach.first + j));
    combineRows_(y, lines_.data(), reach.weights, reach.count, n);
    if (reach.divisor != 1)
      for (int64_t i = 0; i < n; ++i) y[i] /= reach.divisor;
  }

 private:
  decltype(ResampleKernels::combineRows) combineRows_ = ActiveResampleKernels().combineRows;
  std::vector<const float*> lines_;
};

// Rows of a plane resampled along their length, a few side by side, so that the arithmetic runs on neighbouring
// elements.
class RowResampler {
 public:
  static constexpr int64_t kRowsAtOnce = 16;

  RowResampler(const PlaneWindow& plane, const ResampleTable& table)
      : plane_(plane), width_(plane.rows.m), columns_(MakeAligned<float>(static_cast<size_t>(width_ * kRowsAtOnce))) {
    for (int32_t k = 0; k < table.Length(); ++k) reaches_.push_back(ReachOf(table, k, width_));
    std::fill_n(columns_.get(), width_ * kRowsAtOnce, 0.0f);
  }

  // Source rows first, first + 1, ... into rows of `stride` floats; returns how many.
  int64_t Resample(int64_t first, float* rows, int64_t stride) {
    const int64_t count = std::min<int64_t>(kRowsAtOnce, plane_.first + plane_.rows.n - first);
    for (int64_t r = 0; r < count; ++r)
      for (int64_t c = 0; c < width_; ++c) columns_[c * kRowsAtOnce + r] = plane_.Row(first + r)[c];
    const auto column = [&](int64_t c) { return columns_.get() + c * kRowsAtOnce; };
    for (size_t k = 0; k < reaches_.size(); ++k) {
      float sums[kRowsAtOnce];
      gatherer_.Gather(sums, column, reaches_[k], kRowsAtOnce);
      for (int64_t r = 0; r < count; ++r) rows[r * stride + static_cast<int64_t>(k)] = sums[r];
    }
    return count;
  }

 private:
  const PlaneWindow& plane_;
  const int64_t width_;
  std::vector<Reach> reaches_;
  AlignedArray<float> columns_;  // the rows at work, element by element
  LineGatherer gatherer_;
};

}  // namespace

// The second pass reads the first one's rows from a ring that holds what its taps reach, never a whole plane of them.
void ResampleSeparable(const PlaneWindow& plane, matrix& result, const ResampleTable& horizontal,
                       const ResampleTable& vertical) {
  const bool empty = plane.rows.mn == 0 || horizontal.Length() == 0 || vertical.Length() == 0;
  result.dim(empty ? 0 : horizontal.Length(), empty ? 0 : vertical.Length());
  if (empty) return;
  constexpr int64_t kPiece = RowResampler::kRowsAtOnce;
  const int64_t width = result.m, ringRows = (vertical.taps + kPiece - 1) / kPiece * kPiece + kPiece;
  const auto ring = MakeAligned<float>(static_cast<size_t>(ringRows * width));
  const int64_t begin = ReachOf(vertical, 0, plane.height).first;
  const auto line = [&](int64_t r) { return ring.get() + (r - begin) % ringRows * width; };
  RowResampler rows(plane, horizontal);
  LineGatherer gatherer;
  int64_t done = begin;
  for (int32_t k = 0; k < result.n; ++k) {
    const Reach reach = ReachOf(vertical, k, plane.height);
    while (done < reach.first + reach.count) done += rows.Resample(done, line(done), width);
    gatherer.Gather(result.z[k], line, reach, width);
  }
}

void ResampleAlongRows(const matrix& plane, matrix& result, const ResampleTable& horizontal) {
  result.dim(horizontal.Length(), plane.n);
  if (result.mn == 0) return;
  const PlaneWindow whole(plane);
  RowResampler rows(whole, horizontal);
  for (int64_t r = 0; r < plane.n;) r += rows.Resample(r, result.z[r], result.m);
}

void ResampleAlongColumns(const PlaneWindow& plane, matrix& result, const ResampleTable& vertical, int32_t first,
                          int32_t count) {
  result.dim(plane.rows.m, count);
  const auto line = [&](int64_t r) { return plane.Row(r); };
  LineGatherer gatherer;
  for (int32_t r = 0; r < result.n; ++r)
    gatherer.Gather(result.z[r], line, ReachOf(vertical, first + r, plane.height), result.m);
}

AxisPart SourceOf(const ResampleTable& table, int32_t length, AxisPart output) {
  const int32_t last = table.start[static_cast<size_t>(output.first) + static_cast<size_t>(output.count) - 1];
  const int32_t first = std::clamp(table.start[static_cast<size_t>(output.first)], 0, length - 1);
  const int64_t end = std::clamp<int64_t>(int64_t{last} + table.taps, first + 1, length);
  return {first, static_cast<int32_t>(end) - first};
}

}  // namespace norv
