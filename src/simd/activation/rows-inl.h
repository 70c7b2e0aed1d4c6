// Activation functions on rows of floats.
#pragma once

#include "simd/activation/kinds-inl.h"
#include "simd/evaluate/kernels.h"
#include "simd/rows-inl.h"

namespace norv::NORV_LEVEL {

template <typename Kind>
void ActivationRow(const float* x, float* y, int64_t n) {
  EachInDoubles(x, y, n, [](Doubles z) { return Kind::f(z); });
}

// What the table holds; a kind with a faster way has a row function of its own.
template <typename Kind>
inline constexpr RowFunction kActivationRow = ActivationRow<Kind>;

template <typename List>
struct RowTable;
template <typename... Kinds>
struct RowTable<KindList<Kinds...>> {
  static constexpr RowFunction kRows[kActivationKinds] = {nullptr, kActivationRow<Kinds>...};
};

}  // namespace norv::NORV_LEVEL
