// Rows combined, and taken apart into their phases.
#pragma once

#include "simd/restore/kernels.h"
#include "simd/restore/loops-inl.h"

namespace norv::NORV_LEVEL {
namespace {

// Sums of this many vectors stay in registers while the rows pass.
constexpr int64_t kSums = 4;

inline void CombineBlock(float* out, const float* const* rows, const float* taps, int64_t count, int64_t j) {
  Eight sum[kSums] = {};
  for (int64_t i = 0; i < count; ++i)
    for (int64_t k = 0; k < kSums; ++k) sum[k] += taps[i] * Load<Eight>(rows[i] + j + k * 8);
  for (int64_t k = 0; k < kSums; ++k) Store(sum[k], out + j + k * 8);
}

void CombineRows(float* out, const float* const* rows, const float* taps, int64_t count, int64_t n) {
  int64_t j = 0;
  for (; j + kSums * 8 <= n; j += kSums * 8) CombineBlock(out, rows, taps, count, j);
  ForRow(n - j, [&]<typename V>(int64_t k) {
    V sum{};
    for (int64_t i = 0; i < count; ++i) sum += taps[i] * Load<V>(rows[i] + j + k);
    Store(sum, out + j + k);
  });
}

template <int64_t kFactor>
void SplitBy(float* phases, int64_t stride, const float* line, int64_t f, int64_t n) {
  const int64_t factor = kFactor ? kFactor : f;
  for (int64_t p = 0; p < factor; ++p)
    for (int64_t j = 0; j < n; ++j) phases[p * stride + j] = line[factor * j + p];
}

void SplitPhases(float* phases, int64_t stride, const float* line, int64_t f, int64_t n) {
  const auto split = f == 2 ? SplitBy<2> : f == 3 ? SplitBy<3> : f == 4 ? SplitBy<4> : SplitBy<0>;
  split(phases, stride, line, f, n);
}

template <int64_t kFactor>
void JoinBy(float* __restrict line, const float* __restrict phases, int64_t stride, int64_t f, int64_t n) {
  const int64_t factor = kFactor ? kFactor : f;
  for (int64_t j = 0; j < n; ++j)
    for (int64_t p = 0; p < factor; ++p) line[factor * j + p] = phases[p * stride + j];
}

void JoinPhases(float* line, const float* phases, int64_t stride, int64_t f, int64_t n) {
  const auto join = f == 2 ? JoinBy<2> : f == 3 ? JoinBy<3> : f == 4 ? JoinBy<4> : JoinBy<0>;
  join(line, phases, stride, f, n);
}

}  // namespace
}  // namespace norv::NORV_LEVEL
