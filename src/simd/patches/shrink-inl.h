// The coefficients of a tile of patches made smaller.
#pragma once

#include "simd/patches/kernels.h"
#include "simd/vector-inl.h"

namespace norv::NORV_LEVEL {
namespace {

// Row by row: change(k, x, weight) returns the new value of the vector at column x of row k and adds to its weight.
template <typename Change>
inline int32_t ShrinkRows(float* rows, int32_t count, float* weights, int32_t* active, Change change) {
  constexpr int kVectors = kPatchesPerTile / kFloatLanes;
  Floats weight[kVectors];
  for (Floats& one : weight) one = Fill<Floats>(1);
  int32_t found = 0;
  for (int32_t k = 0; k < count; ++k) {
    Like<Floats, int32_t> left = {};
    for (int v = 0; v < kVectors; ++v) {
      const Floats value =
          change(Load<Floats>(rows + v * kFloatLanes), k * kPatchesPerTile + v * kFloatLanes, weight[v]);
      Store(value, rows + v * kFloatLanes);
      left |= value != 0.0f;
    }
    rows += kPatchesPerTile;
    active[found] = k;
    found += AnyLane(left);
  }
  for (int v = 0; v < kVectors; ++v) Store(1.0f / weight[v], weights + v * kFloatLanes);
  return found;
}

inline int32_t Threshold(float* rows, int32_t count, float threshold, float* weights, int32_t* active) {
  return ShrinkRows(rows, count, weights, active, [=](Floats value, int64_t, Floats& weight) {
    const auto keep = Abs(value) > threshold;
    weight += keep ? Fill<Floats>(1) : Floats{};
    return keep ? value : Floats{};
  });
}

inline int32_t Shrink(float* rows, int32_t count, const float* guide, float variance, float* weights, int32_t* active) {
  return ShrinkRows(rows, count, weights, active, [=](Floats value, int64_t place, Floats& weight) {
    const Floats p = Load<Floats>(guide + place), square = p * p, factor = square / (square + variance);
    weight += factor * factor;
    return value * factor;
  });
}

}  // namespace
}  // namespace norv::NORV_LEVEL
