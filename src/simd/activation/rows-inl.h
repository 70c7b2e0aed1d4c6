// Activation functions on rows of floats.
#pragma once

#include "simd/activation/kinds-inl.h"
#include "simd/evaluate/kernels.h"

namespace norv::NORV_LEVEL {

// y[i] = function(x[i]), which turns a vector of doubles into what is stored.
template <typename T, typename Function>
inline void EachInDoubles(const float* x, T* y, int64_t n, Function function) {
  int64_t i = 0;
  for (; i + kDoubleLanes <= n; i += kDoubleLanes) Store(function(Widen(Load<HalfFloats>(x + i))), y + i);
  if (i == n) return;
  StorePart(function(Widen(LoadPart<HalfFloats>(x + i, n - i))), y + i, n - i);
}

template <typename Kind>
void ActivationRow(const float* x, float* y, int64_t n) {
  EachInDoubles(x, y, n, [](Doubles z) { return Narrow(Kind::f(z)); });
}

template <typename Kind>
void DerivativeRow(const float* x, double* y, int64_t n) {
  EachInDoubles(x, y, n, [](Doubles z) { return Kind::df(z); });
}

// What the tables hold; a kind with a faster way has a row function of its own.
template <typename Kind>
inline constexpr RowFunction kActivationRow = ActivationRow<Kind>;

template <typename List>
struct RowTables;
template <typename... Kinds>
struct RowTables<KindList<Kinds...>> {
  static constexpr RowFunction kActivation[] = {nullptr, kActivationRow<Kinds>...};
  static constexpr DoubleRowFunction kDerivative[] = {nullptr, DerivativeRow<Kinds>...};
};

}  // namespace norv::NORV_LEVEL
