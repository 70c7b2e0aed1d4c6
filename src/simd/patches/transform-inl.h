// Patches to coefficients and back: lanes are the neighbouring patches of a tile.
#pragma once

#include "simd/patches/kernels.h"
#include "simd/vector-inl.h"

namespace norv::NORV_LEVEL {
namespace {

// A tile is kAcross vectors wide, kDown of which stay in registers while taps or components pass.
inline constexpr int kAcross = kPatchesPerTile / kFloatLanes;
inline constexpr int kDown = kPatchBlock / kAcross;

struct TileSums {
  Floats sum[kDown][kAcross];

  // sum[n] += factor[n] * values
  void Add(const float* factor, const float* values) {
    for (int x = 0; x < kAcross; ++x) {
      const Floats value = Load<Floats>(values + x * kFloatLanes);
      for (int n = 0; n < kDown; ++n) sum[n][x] += factor[n] * value;
    }
  }
};

inline void Analyse(const float* plane, int64_t stride, int32_t side, const float* basis, const float* mean,
                    int32_t count, float* out) {
  for (int32_t k = 0; k < count; k += kDown) {
    TileSums sums = {};
    const float* factor = basis + k;
    for (int32_t i = 0; i < side; ++i)
      for (int32_t j = 0; j < side; ++j, factor += count) sums.Add(factor, plane + i * stride + j);
    for (int n = 0; n < kDown; ++n)
      for (int x = 0; x < kAcross; ++x)
        Store(sums.sum[n][x] - mean[k + n], out + (k + n) * kPatchesPerTile + x * kFloatLanes);
  }
}

inline void Synthesise(const float* rows, const int32_t* active, int32_t activeCount, const float* basis,
                       const float* mean, int32_t side, const float* weights, float* sums, float* sumsOfWeights,
                       int64_t stride) {
  const int32_t taps = side * side, padded = (taps + kPatchBlock - 1) / kPatchBlock * kPatchBlock;
  const auto add = [](Floats value, float* to) { Store(Load<Floats>(to) + value, to); };
  for (int32_t first = 0; first < taps; first += kDown) {
    TileSums patch;
    for (int n = 0; n < kDown; ++n)
      for (Floats& sum : patch.sum[n]) sum = Floats{} + mean[first + n];
    for (int32_t a = 0; a < activeCount; ++a)
      patch.Add(basis + int64_t{active[a]} * padded + first, rows + int64_t{active[a]} * kPatchesPerTile);
    for (int32_t n = 0; n < kDown && first + n < taps; ++n) {
      const int64_t place = (first + n) / side * stride + (first + n) % side;
      for (int x = 0; x < kAcross; ++x) {
        const Floats weight = Load<Floats>(weights + x * kFloatLanes);
        add(weight * patch.sum[n][x], sums + place + x * kFloatLanes);
        add(weight, sumsOfWeights + place + x * kFloatLanes);
      }
    }
  }
}

}  // namespace
}  // namespace norv::NORV_LEVEL
