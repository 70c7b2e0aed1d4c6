// Loops over rows that more than one family needs.
#pragma once

#include "simd/vector-inl.h"

namespace norv::NORV_LEVEL {

// y[i] = function(x[i]) in double precision, rounded; x and y may be the same.
template <typename Function>
inline void EachInDoubles(const float* x, float* y, int64_t n, Function function) {
  int64_t i = 0;
  for (; i + kDoubleLanes <= n; i += kDoubleLanes) Store(Narrow(function(Widen(Load<HalfFloats>(x + i)))), y + i);
  if (i == n) return;
  StorePart(Narrow(function(Widen(LoadPart<HalfFloats>(x + i, n - i)))), y + i, n - i);
}

}  // namespace norv::NORV_LEVEL
