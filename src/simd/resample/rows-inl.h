// Weighted sums of rows.
#pragma once

#include "simd/resample/kernels.h"
#include "simd/vector-inl.h"

namespace norv::NORV_LEVEL {
namespace {

// The columns from j on, in `parts` vectors V that stay in registers while the rows pass.
template <typename V, int parts>
inline void CombineColumns(float* out, const float* const* rows, const float* taps, int64_t count, int64_t j) {
  V sum[parts] = {};
  for (int64_t i = 0; i < count; ++i)
    for (int p = 0; p < parts; ++p) sum[p] += taps[i] * Load<V>(rows[i] + j + p * kLanes<V>);
  for (int p = 0; p < parts; ++p) Store(sum[p], out + j + p * kLanes<V>);
}

inline void CombineRows(float* out, const float* const* rows, const float* taps, int64_t count, int64_t n) {
  constexpr int kParts = 4;
  int64_t j = 0;
  for (; j + kParts * kFloatLanes <= n; j += kParts * kFloatLanes)
    CombineColumns<Floats, kParts>(out, rows, taps, count, j);
  for (; j + kFloatLanes <= n; j += kFloatLanes) CombineColumns<Floats, 1>(out, rows, taps, count, j);
  // Where vectors are wider than eight: up to fifteen single columns took longer than all of a short row's vectors.
  if constexpr (kUpToEight < kFloatLanes)
    for (; j + kUpToEight <= n; j += kUpToEight) CombineColumns<UpToEight, 1>(out, rows, taps, count, j);
  for (; j < n; ++j) CombineColumns<float, 1>(out, rows, taps, count, j);
}

}  // namespace
}  // namespace norv::NORV_LEVEL
