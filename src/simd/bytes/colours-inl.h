// Colours to bytes: lanes are the pixels.
#pragma once

#include "simd/bytes/kernels.h"
#include "simd/vector-inl.h"

namespace norv::NORV_LEVEL {
namespace {

// Sixteen gain 9 % alone, but cost the conversions of other colour models around them 10 %.
using Pixels = UpToEight;

inline Pixels Positive(Pixels value) { return value > 0.0f ? value : Pixels{}; }

// Infinity times the scale 0 is the only NaN here.
inline Pixels Scaled(Pixels value, Pixels scale) {
  const Pixels scaled = value * scale;
  return (scaled == scaled ? scaled : 255.0f) + 0.5f;
}

// Whole numbers below 256 to bytes, the first ones first: in fours, as the oldest machines have them no wider.
template <typename V>
inline void StoreBytes(V first, V second, V third, uint8_t* bytes) {
  if constexpr (4 < kLanes<V>) {
    StoreBytes(LowHalf(first), LowHalf(second), LowHalf(third), bytes);
    StoreBytes(HighHalf(first), HighHalf(second), HighHalf(third), bytes + 3 * kLanes<V> / 2);
  } else {
    const auto all = __builtin_bit_cast(Vec<uint8_t, 16>, first | second << 8 | third << 16);
    StorePart(__builtin_shufflevector(all, all, 0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 3, 7, 11, 15), bytes, 12);
  }
}

// Dividing by at least 255 gives the scale 1 to colours that need none, without a branch.
inline void VectorToBytes(Pixels first, Pixels second, Pixels third, uint8_t* bytes) {
  first = Positive(first), second = Positive(second), third = Positive(third);
  Pixels largest = first > second ? first : second;
  largest = largest > third ? largest : third;
  const Pixels scale = 255.0f / (largest > 255.0f ? largest : Fill<Pixels>(255));
  StoreBytes(Convert<int32_t>(Scaled(third, scale)), Convert<int32_t>(Scaled(second, scale)),
             Convert<int32_t>(Scaled(first, scale)), bytes);
}

inline void FromColours(const float* const* colour, int32_t n, uint8_t* bytes) {
  int32_t i = 0;
  for (; i + kLanes<Pixels> <= n; i += kLanes<Pixels>)
    VectorToBytes(Load<Pixels>(colour[0] + i), Load<Pixels>(colour[1] + i), Load<Pixels>(colour[2] + i), bytes + 3 * i);
  if (i == n) return;
  uint8_t last[3 * kLanes<Pixels>];
  Pixels value[3];
  for (int k = 0; k < 3; ++k) value[k] = LoadPart<Pixels>(colour[k] + i, n - i);
  VectorToBytes(value[0], value[1], value[2], last);
  __builtin_memcpy(bytes + 3 * i, last, 3 * static_cast<size_t>(n - i));
}

}  // namespace
}  // namespace norv::NORV_LEVEL
