// Eight partial sums, in one vector or several.
#pragma once

#include "simd/columns/kernels.h"
#include "simd/vector-inl.h"

namespace norv::NORV_LEVEL {
namespace {

// Lanes are added in halves: those of eight sums ((0 + 4) + (2 + 6)) + ((1 + 5) + (3 + 7)).
template <typename V>
inline double AddLanes(V v) {
  if constexpr (kLanes<V> == 2)
    return v[0] + v[1];
  else
    return AddLanes(LowHalf(v) + HighHalf(v));
}

struct EightSums {
  static constexpr int kParts = 8 / kDoubleLanes;
  Doubles part[kParts] = {};

  void Add(const double* a, const double* b) {
    for (int p = 0; p < kParts; ++p)
      part[p] += Load<Doubles>(a + p * kDoubleLanes) * Load<Doubles>(b + p * kDoubleLanes);
  }
  double Total() const {
    if constexpr (kParts == 1)
      return AddLanes(part[0]);
    else if constexpr (kParts == 2)
      return AddLanes(part[0] + part[1]);
    else
      return AddLanes((part[0] + part[2]) + (part[1] + part[3]));
  }
};

}  // namespace
}  // namespace norv::NORV_LEVEL
