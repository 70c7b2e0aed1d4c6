// Lines split into phases and joined again: loops that the compiler turns into shuffles for a factor that it knows.
#pragma once

#include "simd/resample/kernels.h"
#include "simd/vector-inl.h"

namespace norv::NORV_LEVEL {
namespace {

template <int64_t kFactor>
void SplitBy(float* phases, int64_t stride, const float* line, int64_t f, int64_t n) {
  const int64_t factor = kFactor ? kFactor : f;
  for (int64_t p = 0; p < factor; ++p)
    for (int64_t j = 0; j < n; ++j) phases[p * stride + j] = line[factor * j + p];
}

inline void SplitPhases(float* phases, int64_t stride, const float* line, int64_t f, int64_t n) {
  const auto split = f == 2 ? SplitBy<2> : f == 3 ? SplitBy<3> : f == 4 ? SplitBy<4> : SplitBy<0>;
  split(phases, stride, line, f, n);
}

template <int64_t kFactor>
void JoinBy(float* __restrict line, const float* __restrict phases, int64_t stride, int64_t f, int64_t n) {
  const int64_t factor = kFactor ? kFactor : f;
  for (int64_t j = 0; j < n; ++j)
    for (int64_t p = 0; p < factor; ++p) line[factor * j + p] = phases[p * stride + j];
}

inline void JoinPhases(float* line, const float* phases, int64_t stride, int64_t f, int64_t n) {
  const auto join = f == 2 ? JoinBy<2> : f == 3 ? JoinBy<3> : f == 4 ? JoinBy<4> : JoinBy<0>;
  join(line, phases, stride, f, n);
}

}  // namespace
}  // namespace norv::NORV_LEVEL
