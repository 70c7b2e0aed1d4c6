// How far neighbouring patches are from a given one: lanes are the patches.
#pragma once

#include "simd/patches/kernels.h"
#include "simd/vector-inl.h"

namespace norv::NORV_LEVEL {
namespace {

// Of `vectors` vectors of patches, so many that each tap's additions need not wait for the last one's.
template <int vectors>
inline void DistancesOf(const float* patch, const float* candidates, int64_t stride, int32_t side, float* out) {
  Floats sum[vectors] = {};
  for (int32_t i = 0; i < side; ++i)
    for (int32_t j = 0; j < side; ++j) {
      const float tap = patch[i * stride + j];
      for (int v = 0; v < vectors; ++v) {
        const Floats difference = Load<Floats>(candidates + i * stride + j + v * kFloatLanes) - tap;
        sum[v] += difference * difference;
      }
    }
  for (int v = 0; v < vectors; ++v) Store(sum[v], out + v * kFloatLanes);
}

inline void Distances(const float* patch, const float* candidates, int64_t stride, int32_t side, int32_t count,
                      float* out) {
  for (int32_t x = 0; x < count;) {
    const int32_t vectors = (count - x + kFloatLanes - 1) / kFloatLanes;
    const auto some = vectors >= 4   ? DistancesOf<4>
                      : vectors == 3 ? DistancesOf<3>
                      : vectors == 2 ? DistancesOf<2>
                                     : DistancesOf<1>;
    some(patch, candidates + x, stride, side, out + x);
    x += (vectors < 4 ? vectors : 4) * kFloatLanes;
  }
}

}  // namespace
}  // namespace norv::NORV_LEVEL
