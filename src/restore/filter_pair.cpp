#include "restore/filter_pair.h"

#include <algorithm>

#include "raster/edges.h"
#include "simd/resample/kernels.h"

namespace norv {
FilterPair::FilterPair(FilterChoice filter, int32_t f, int32_t w, int32_t h) : f_(f), w_(w), h_(h) {
  BuildTaps(taps_, f, filter);
  length_ = taps_.mn;
  offset_ = (length_ - f) / 2;
  margin_ = std::max<int64_t>(offset_, 0);
  phaseLength_ = w + (length_ - 1) / f + 1;
  // A line with its margins, and room for the last block of phases behind it.
  stride_ = f * phaseLength_ + 2 * margin_ + f;
  for (int64_t p = 0; p < f; ++p)
    for (int64_t i = p; i < length_; i += f) phaseTaps_.push_back(taps_.x[i]);
  CollectShares();
  ringSize_ = RingSize();
}

FilterLines::FilterLines(const FilterPair& pair)
    : pair_(pair),
      rows_(pair.mostRows_),
      rowTaps_(pair.mostRows_),
      line_(Zeros<float>(pair.stride_)),
      phases_(Zeros<float>(pair.f_ * pair.phaseLength_)),
      padded_(Zeros<float>(2 * pair.phaseLength_ + pair.w_)),
      ring_(Zeros<float>(pair.ringSize_ * pair.stride_)) {}

void FilterPair::CollectShares() {
  const int64_t large = int64_t{f_} * h_;
  const auto target = [&](int64_t i, int64_t tap) { return MirrorIndex(f_ * i - offset_ + tap, large); };
  firstShare_.assign(static_cast<size_t>(large) + 1, 0);
  for (int64_t i = 0; i < h_; ++i)
    for (int64_t t = 0; t < length_; ++t) ++firstShare_[target(i, t) + 1];
  for (int64_t r = 0; r < large; ++r) firstShare_[r + 1] += firstShare_[r];
  shares_.resize(static_cast<size_t>(firstShare_[large]));
  std::vector<int64_t> next(firstShare_.begin(), firstShare_.end() - 1);
  for (int32_t i = 0; i < h_; ++i)
    for (int64_t t = 0; t < length_; ++t) shares_[next[target(i, t)]++] = {i, taps_.x[t]};
  mostRows_ = static_cast<size_t>(length_);
  for (int64_t r = 0; r < large; ++r)
    mostRows_ = std::max(mostRows_, static_cast<size_t>(firstShare_[r + 1] - firstShare_[r]));
}

// How many small rows are needed at the same time while the large rows are made in order.
int32_t FilterPair::RingSize() const {
  const int64_t large = int64_t{f_} * h_;
  std::vector<int32_t> earliest(static_cast<size_t>(large) + 1, h_);
  for (int64_t r = large - 1; r >= 0; --r) {
    const bool none = firstShare_[r] == firstShare_[r + 1];
    earliest[r] = none ? earliest[r + 1] : std::min(earliest[r + 1], shares_[firstShare_[r]].row);
  }
  int32_t latest = -1, size = 1;
  for (int64_t r = 0; r < large; ++r) {
    if (firstShare_[r] < firstShare_[r + 1]) latest = std::max(latest, shares_[firstShare_[r + 1] - 1].row);
    size = std::max(size, latest - earliest[r] + 1);
  }
  return size;
}

// ---------------------------------------------------------------------------------------------------- reduction

Range FilterPair::SourcesOf(int64_t i) const {
  const int64_t large = int64_t{f_} * h_, first = f_ * i - offset_;
  if (first >= 0 && first + length_ <= large) return {first, first + length_};
  Range sources{large, 0};
  for (int64_t t = 0; t < length_; ++t) {
    const int64_t row = MirrorIndex(first + t, large);
    sources = {std::min(sources.begin, row), std::max(sources.end, row + 1)};
  }
  return sources;
}

Range FilterPair::Sources(Range small) const {
  Range all{int64_t{f_} * h_, 0};
  for (int64_t i = small.begin; i < small.end; ++i) {
    const Range sources = SourcesOf(i);
    all = {std::min(all.begin, sources.begin), std::max(all.end, sources.end)};
  }
  return all;
}

void FilterPair::FillMargins(float* line) const {
  const int64_t large = int64_t{f_} * w_;
  for (int64_t k = 0; k < margin_; ++k) {
    line[-1 - k] = line[MirrorIndex(-1 - k, large)];
    line[large + k] = line[MirrorIndex(large + k, large)];
  }
}

void FilterPair::ReduceRow(const PlaneRows& large, int32_t i, float* small, FilterLines& lines) const {
  const ResampleKernels& kernels = ActiveResampleKernels();
  float *line = lines.line_.get() + margin_, *phases = lines.phases_.get();
  const float** rows = lines.rows_.data();
  for (int64_t t = 0; t < length_; ++t) rows[t] = large[MirrorIndex(int64_t{f_} * i - offset_ + t, large.n)];
  kernels.combineRows(line, rows, taps_.x, length_, int64_t{f_} * w_);
  FillMargins(line);
  kernels.splitPhases(phases, phaseLength_, line - offset_, f_, phaseLength_ - 1);
  for (int64_t t = 0; t < length_; ++t) rows[t] = phases + t % f_ * phaseLength_ + t / f_;
  kernels.combineRows(small, rows, taps_.x, length_, w_);
}

// ------------------------------------------------------------------------------------------------------- adjoint

void FilterPair::FoldMargins(float* line) const {
  const int64_t large = int64_t{f_} * w_;
  for (int64_t k = 0; k < margin_; ++k) line[MirrorIndex(-1 - k, large)] += line[-1 - k];
  for (int64_t k = 0; k < margin_; ++k) line[MirrorIndex(large + k, large)] += line[large + k];
}

Range FilterPair::Shares(Range large) const {
  Range all{h_, 0};
  for (int64_t k = firstShare_[large.begin]; k < firstShare_[large.end]; ++k)
    all = {std::min<int64_t>(all.begin, shares_[k].row), std::max<int64_t>(all.end, shares_[k].row + 1)};
  return all;
}

// Phase p of the wide row is made of the taps p, p + f, ... and the small row moved by one pixel for each.
void FilterPair::AdjointAlongRow(const float* small, float* large, FilterLines& lines) const {
  const ResampleKernels& kernels = ActiveResampleKernels();
  float *padded = lines.padded_.get() + phaseLength_, *phases = lines.phases_.get();
  std::copy_n(small, w_, padded);
  const float* taps = phaseTaps_.data();
  for (int64_t p = 0; p < f_; ++p) {
    const int64_t count = p < length_ ? (length_ - 1 - p) / f_ + 1 : 0;
    for (int64_t k = 0; k < count; ++k) lines.rows_[k] = padded - k;
    kernels.combineRows(phases + p * phaseLength_, lines.rows_.data(), taps, count, phaseLength_);
    taps += count;
  }
  kernels.joinPhases(large - offset_, phases, phaseLength_, f_, phaseLength_ - 1);
  FoldMargins(large);
}

void FilterPair::AdjointRow(const PlaneRows& small, int64_t r, float* large, FilterLines& lines) const {
  for (const int32_t last = LastShare(r); lines.widened_ <= last; ++lines.widened_)
    AdjointAlongRow(small[lines.widened_], lines.Ring(lines.widened_), lines);
  const int64_t begin = firstShare_[r], count = firstShare_[r + 1] - begin;
  for (int64_t k = 0; k < count; ++k) {
    lines.rows_[k] = lines.Ring(shares_[begin + k].row);
    lines.rowTaps_[k] = shares_[begin + k].tap;
  }
  ActiveResampleKernels().combineRows(large, lines.rows_.data(), lines.rowTaps_.data(), count, int64_t{f_} * w_);
}

}  // namespace norv
