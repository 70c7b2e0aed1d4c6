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
  line_ = Zeros<float>(stride_);
  phases_ = Zeros<float>(f * phaseLength_);
  padded_ = Zeros<float>(2 * phaseLength_ + w);
  for (int64_t p = 0; p < f; ++p)
    for (int64_t i = p; i < length_; i += f) phaseTaps_.push_back(taps_.x[i]);
  CollectShares();
  ringSize_ = RingSize();
  ring_ = Zeros<float>(ringSize_ * stride_);
}

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
  size_t most = static_cast<size_t>(length_);
  for (int64_t r = 0; r < large; ++r) most = std::max(most, static_cast<size_t>(firstShare_[r + 1] - firstShare_[r]));
  rows_.resize(most);
  rowTaps_.resize(most);
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

int32_t FilterPair::LastSource(int32_t i) const {
  const int64_t large = int64_t{f_} * h_, first = int64_t{f_} * i - offset_;
  if (first >= 0 && first + length_ <= large) return static_cast<int32_t>(first + length_ - 1);
  int64_t last = 0;
  for (int64_t t = 0; t < length_; ++t) last = std::max(last, MirrorIndex(first + t, large));
  return static_cast<int32_t>(last);
}

void FilterPair::FillMargins(float* line) const {
  const int64_t large = int64_t{f_} * w_;
  for (int64_t k = 0; k < margin_; ++k) {
    line[-1 - k] = line[MirrorIndex(-1 - k, large)];
    line[large + k] = line[MirrorIndex(large + k, large)];
  }
}

void FilterPair::ReduceRow(const matrix& large, int32_t i, float* small) {
  const ResampleKernels& kernels = ActiveResampleKernels();
  float* line = line_.get() + margin_;
  for (int64_t t = 0; t < length_; ++t) rows_[t] = large.z[MirrorIndex(int64_t{f_} * i - offset_ + t, large.n)];
  kernels.combineRows(line, rows_.data(), taps_.x, length_, int64_t{f_} * w_);
  FillMargins(line);
  kernels.splitPhases(phases_.get(), phaseLength_, line - offset_, f_, phaseLength_ - 1);
  for (int64_t t = 0; t < length_; ++t) rows_[t] = phases_.get() + t % f_ * phaseLength_ + t / f_;
  kernels.combineRows(small, rows_.data(), taps_.x, length_, w_);
}

// ------------------------------------------------------------------------------------------------------- adjoint

void FilterPair::FoldMargins(float* line) const {
  const int64_t large = int64_t{f_} * w_;
  for (int64_t k = 0; k < margin_; ++k) line[MirrorIndex(-1 - k, large)] += line[-1 - k];
  for (int64_t k = 0; k < margin_; ++k) line[MirrorIndex(large + k, large)] += line[large + k];
}

// Phase p of the wide row is made of the taps p, p + f, ... and the small row moved by one pixel for each.
void FilterPair::AdjointAlongRow(const float* small, float* large) {
  const ResampleKernels& kernels = ActiveResampleKernels();
  float* padded = padded_.get() + phaseLength_;
  std::copy_n(small, w_, padded);
  const float* taps = phaseTaps_.data();
  for (int64_t p = 0; p < f_; ++p) {
    const int64_t count = p < length_ ? (length_ - 1 - p) / f_ + 1 : 0;
    for (int64_t k = 0; k < count; ++k) rows_[k] = padded - k;
    kernels.combineRows(phases_.get() + p * phaseLength_, rows_.data(), taps, count, phaseLength_);
    taps += count;
  }
  kernels.joinPhases(large - offset_, phases_.get(), phaseLength_, f_, phaseLength_ - 1);
  FoldMargins(large);
}

void FilterPair::AdjointRow(const matrix& small, int32_t r, float* large) {
  if (r == 0) widened_ = 0;
  const int64_t begin = firstShare_[r], count = firstShare_[r + 1] - begin;
  for (; count > 0 && widened_ <= shares_[begin + count - 1].row; ++widened_)
    AdjointAlongRow(small.z[widened_], Ring(widened_));
  for (int64_t k = 0; k < count; ++k) {
    rows_[k] = Ring(shares_[begin + k].row);
    rowTaps_[k] = shares_[begin + k].tap;
  }
  ActiveResampleKernels().combineRows(large, rows_.data(), rowTaps_.data(), count, int64_t{f_} * w_);
}

}  // namespace norv
