// The sums of a layer whose weights lie unit by unit, so that the backward sums read them in order: lanes are inputs.
// The eight lane sums of four units are turned into four sums of eight at the end.
#pragma once

#include "simd/train/kernels.h"
#include "simd/vector-inl.h"

namespace norv::NORV_LEVEL {

using Four = Vec<float, 4>;
using Eight = Vec<float, 8>;

// Four vectors of eight lane sums become the four sums: lanes 1 to 7 added to lane 0 in order.
inline __attribute__((always_inline)) Four AddLanes(Eight a, Eight b, Eight c, Eight d) {
  const Eight ab02 = __builtin_shufflevector(a, b, 0, 8, 1, 9, 4, 12, 5, 13);
  const Eight cd02 = __builtin_shufflevector(c, d, 0, 8, 1, 9, 4, 12, 5, 13);
  const Eight ab13 = __builtin_shufflevector(a, b, 2, 10, 3, 11, 6, 14, 7, 15);
  const Eight cd13 = __builtin_shufflevector(c, d, 2, 10, 3, 11, 6, 14, 7, 15);
  // Lane k of the four units in the lower half, lane k + 4 in the upper one.
  const Eight lane[4] = {__builtin_shufflevector(ab02, cd02, 0, 1, 8, 9, 4, 5, 12, 13),
                         __builtin_shufflevector(ab02, cd02, 2, 3, 10, 11, 6, 7, 14, 15),
                         __builtin_shufflevector(ab13, cd13, 0, 1, 8, 9, 4, 5, 12, 13),
                         __builtin_shufflevector(ab13, cd13, 2, 3, 10, 11, 6, 7, 14, 15)};
  Four total = LowHalf(lane[0]);
  for (int k = 1; k < 4; ++k) total += LowHalf(lane[k]);
  for (int k = 0; k < 4; ++k) total += HighHalf(lane[k]);
  return total;
}

// Four units, all inputs; their z.
inline __attribute__((always_inline)) Four FourRows(const TrainSums& s, int32_t u) {
  const int32_t whole = s.inputs / 8 * 8;
  Eight sum[4] = {};
  const auto row = [&](int r) { return s.W + static_cast<int64_t>(u + r) * s.stride; };
  for (int32_t i = 0; i < whole; i += 8)
    for (int r = 0; r < 4; ++r) sum[r] += Load<Eight>(row(r) + i) * Load<Eight>(s.input + i);
  for (int32_t i = whole; i < s.inputs; ++i)
    for (int r = 0; r < 4; ++r) sum[r][0] += row(r)[i] * s.input[i];
  return AddLanes(sum[0], sum[1], sum[2], sum[3]) + Load<Four>(s.bias + u);
}

inline void TrainRows(const TrainSums& sums, int32_t begin, int32_t end) {
  // In stores no shorter than the activations' loads, which would wait for the memory otherwise.
  int32_t u = begin;
  for (; u + 4 < end; u += 8) {
    const Four low = FourRows(sums, u);
    Store(Join(low, FourRows(sums, u + 4)), sums.z + u);
  }
  if (u < end) Store(Join(FourRows(sums, u), Four{}), sums.z + u);
}

}  // namespace norv::NORV_LEVEL
