// The sums of a layer whose weights lie unit by unit, so that the backward sums read them in order: lanes are inputs.
// The eight lane sums of four units are turned into four sums of eight at the end.
#pragma once

#include "simd/train/kernels.h"
#include "simd/vector-inl.h"

namespace norv::NORV_LEVEL {

using Four = Vec<float, 4>;
inline constexpr int kParts = 8 / kUpToEight;  // vectors that hold the eight sums of a unit

// Lane k of four vectors side by side, k from 0 to 3; of vectors of eight also lane k + 4 in the upper half.
inline __attribute__((always_inline)) void Transpose(const UpToEight (&from)[4][kParts], int part,
                                                     UpToEight (&lane)[4]) {
  const UpToEight a = from[0][part], b = from[1][part], c = from[2][part], d = from[3][part];
#if NORV_VECTOR_BYTES < 32
  const UpToEight ab01 = __builtin_shufflevector(a, b, 0, 4, 1, 5), ab23 = __builtin_shufflevector(a, b, 2, 6, 3, 7);
  const UpToEight cd01 = __builtin_shufflevector(c, d, 0, 4, 1, 5), cd23 = __builtin_shufflevector(c, d, 2, 6, 3, 7);
  lane[0] = __builtin_shufflevector(ab01, cd01, 0, 1, 4, 5);
  lane[1] = __builtin_shufflevector(ab01, cd01, 2, 3, 6, 7);
  lane[2] = __builtin_shufflevector(ab23, cd23, 0, 1, 4, 5);
  lane[3] = __builtin_shufflevector(ab23, cd23, 2, 3, 6, 7);
#else
  const UpToEight ab01 = __builtin_shufflevector(a, b, 0, 8, 1, 9, 4, 12, 5, 13);
  const UpToEight cd01 = __builtin_shufflevector(c, d, 0, 8, 1, 9, 4, 12, 5, 13);
  const UpToEight ab23 = __builtin_shufflevector(a, b, 2, 10, 3, 11, 6, 14, 7, 15);
  const UpToEight cd23 = __builtin_shufflevector(c, d, 2, 10, 3, 11, 6, 14, 7, 15);
  lane[0] = __builtin_shufflevector(ab01, cd01, 0, 1, 8, 9, 4, 5, 12, 13);
  lane[1] = __builtin_shufflevector(ab01, cd01, 2, 3, 10, 11, 6, 7, 14, 15);
  lane[2] = __builtin_shufflevector(ab23, cd23, 0, 1, 8, 9, 4, 5, 12, 13);
  lane[3] = __builtin_shufflevector(ab23, cd23, 2, 3, 10, 11, 6, 7, 14, 15);
#endif
}

// The eight lane sums of four units become the four sums: lanes 1 to 7 added to lane 0 in order.
inline __attribute__((always_inline)) Four AddLanes(const UpToEight (&sum)[4][kParts]) {
  UpToEight lane[4];
  Transpose(sum, 0, lane);
#if NORV_VECTOR_BYTES < 32
  Four total = lane[0];
  for (int k = 1; k < 4; ++k) total += lane[k];
  Transpose(sum, 1, lane);
  for (int k = 0; k < 4; ++k) total += lane[k];
#else
  Four total = LowHalf(lane[0]);
  for (int k = 1; k < 4; ++k) total += LowHalf(lane[k]);
  for (int k = 0; k < 4; ++k) total += HighHalf(lane[k]);
#endif
  return total;
}

// Four units, all inputs; their z.
inline __attribute__((always_inline)) Four FourRows(const TrainSums& s, int32_t u) {
  const int32_t whole = s.inputs / 8 * 8;
  UpToEight sum[4][kParts] = {};
  const auto row = [&](int r) { return s.W + static_cast<int64_t>(u + r) * s.stride; };
  for (int32_t i = 0; i < whole; i += 8)
    for (int r = 0; r < 4; ++r)
      for (int p = 0; p < kParts; ++p)
        sum[r][p] += Load<UpToEight>(row(r) + i + p * kUpToEight) * Load<UpToEight>(s.input + i + p * kUpToEight);
  for (int32_t i = whole; i < s.inputs; ++i)
    for (int r = 0; r < 4; ++r) sum[r][0][0] += row(r)[i] * s.input[i];
  return AddLanes(sum) + Load<Four>(s.bias + u);
}

// In stores no shorter than the activations' loads, which would wait for the memory otherwise.
inline void StoreBoth(Four low, Four high, float* z) {
  if constexpr (kUpToEight == 4)
    Store(low, z), Store(high, z + 4);
  else
    Store(Join(low, high), z);
}

inline void TrainRows(const TrainSums& sums, int32_t begin, int32_t end) {
  int32_t u = begin;
  for (; u + 4 < end; u += 8) {
    const Four low = FourRows(sums, u);
    StoreBoth(low, FourRows(sums, u + 4), sums.z + u);
  }
  if (u < end) StoreBoth(FourRows(sums, u), Four{}, sums.z + u);
}

}  // namespace norv::NORV_LEVEL
