// Weighted sums of a network layer: a tile of units x vectors of pixels, whose sums stay in registers.
//
// The dot product has eight partial sums (see the contract), but only one is alive at a time besides the total: partial
// sum 0 with the tail first, then sum 1, added to the total at once, and so on.
#pragma once

#include "simd/evaluate/kernels.h"
#include "simd/vector-inl.h"

namespace norv::NORV_LEVEL {

// Wide vectors run fastest one at a time, which lets each multiplication fetch its weight itself; narrow ones would
// wait for those fetches, so that two share each weight.
inline constexpr int kTileVectors = NORV_VECTOR_BYTES == 64 ? 1 : 2;

template <int vectors>
struct TileSums {
  Floats of[kUnitsPerTile][vectors];
};

// sums += products of `count` inputs whose rows are rowStep floats apart with weights read one after another; the first
// product is the start value where `first` says so. Returns where the weights go on.
template <int vectors, bool first>
inline const float* AddProducts(const float* weights, const float* x, int64_t rowStep, int32_t count,
                                TileSums<vectors>& sums) {
  for (int32_t j = 0; j < count; ++j) {
    Floats input[vectors];
#pragma GCC unroll 8
    for (int v = 0; v < vectors; ++v) input[v] = Load<Floats>(x + v * kFloatLanes);
#pragma GCC unroll 8
    for (int u = 0; u < kUnitsPerTile; ++u) {
#pragma GCC unroll 8
      for (int v = 0; v < vectors; ++v) {
        if constexpr (first)
          sums.of[u][v] = input[v] * weights[u];
        else
          sums.of[u][v] += input[v] * weights[u];
      }
    }
    weights += kUnitsPerTile;
    x += rowStep;
  }
  return weights;
}

template <int vectors>
inline void EvaluateTile(const float* weights, int32_t inputs, const float* x, float* z) {
  constexpr int64_t kRow = kPixelsPerBlock;
  const int32_t blocks = inputs / 8;
  TileSums<vectors> total = {};
  weights = AddProducts<vectors, false>(weights, x, 8 * kRow, blocks, total);
  weights = AddProducts<vectors, false>(weights, x + blocks * 8 * kRow, kRow, inputs - 8 * blocks, total);
  for (int lane = 1; lane < 8 && blocks > 0; ++lane) {
    TileSums<vectors> sums;
    weights = AddProducts<vectors, true>(weights, x + lane * kRow, 0, 1, sums);
    weights = AddProducts<vectors, false>(weights, x + (lane + 8) * kRow, 8 * kRow, blocks - 1, sums);
#pragma GCC unroll 8
    for (int u = 0; u < kUnitsPerTile; ++u)
#pragma GCC unroll 8
      for (int v = 0; v < vectors; ++v) total.of[u][v] += sums.of[u][v];
  }
#pragma GCC unroll 8
  for (int u = 0; u < kUnitsPerTile; ++u)
#pragma GCC unroll 8
    for (int v = 0; v < vectors; ++v) Store(total.of[u][v] + weights[u], z + u * kRow + v * kFloatLanes);
}

inline void EvaluateLayer(const float* weights, int32_t inputs, int32_t units, const float* x, float* z,
                          int32_t pixels) {
  constexpr int kStep = kTileVectors * kFloatLanes;
  for (int32_t u = 0; u < units; u += kUnitsPerTile) {
    for (int32_t p = 0; p < pixels; p += kStep) EvaluateTile<kTileVectors>(weights, inputs, x + p, z + p);
    weights += int64_t{inputs + 1} * kUnitsPerTile;
    z += kUnitsPerTile * kPixelsPerBlock;
  }
}

}  // namespace norv::NORV_LEVEL
