// Activations and their slopes, a = f(z) and df(z), which share what they have in common.
#pragma once

#include "simd/activation/logistic-inl.h"
#include "simd/train/kernels.h"

namespace norv::NORV_LEVEL {

struct ValueAndSlope {
  Doubles value, slope;
};

template <typename Kind>
struct Both {
  static inline ValueAndSlope Of(Doubles x) { return {Kind::f(x), Kind::df(x)}; }
};

// Where f by itself may cut off an end of its exponential, one of the whole range serves both.
template <>
struct Both<Logistic> {
  static inline ValueAndSlope Of(Doubles x) {
    const Doubles s = 1.0 / (Exp(-x) + 1.0);
    return {s, (1.0 - s) * s};
  }
};
template <>
struct Both<CentredLogistic> {
  static inline ValueAndSlope Of(Doubles x) {
    const ValueAndSlope both = Both<Logistic>::Of(x);
    return {both.value - 0.5, both.slope};
  }
};
template <>
struct Both<ExponentialLinear> {
  static inline ValueAndSlope Of(Doubles x) {
    const Doubles e = Exp(x);
    return {x > 0.0 ? x : e - 1.0, x > 0.0 ? Fill<Doubles>(1) : e};
  }
};

template <typename Kind>
void ActivateRow(const float* z, int32_t n, float* a, double* slope) {
  for (int32_t i = 0; i < n; i += kDoubleLanes) {
    const ValueAndSlope both = Both<Kind>::Of(Widen(Load<HalfFloats>(z + i)));
    Store(Narrow(both.value), a + i);
    Store(both.slope, slope + i);
  }
}

// Up to here exp(-x) s^2 is the exact slope (1 - s) s with a relative error below 2^-38.7; beyond, 1 - s has too few
// bits left for that.
inline constexpr float kShortSlopeLimit = 9;

inline void ActivateLogistic(const float* z, int32_t n, float* a, double* slope) {
  for (int32_t i = 0; i < n; i += kFloatLanes) {
    const Doubles e0 = ShortExpOfNegative(Widen(Load<HalfFloats>(z + i)));
    const Doubles e1 = ShortExpOfNegative(Widen(Load<HalfFloats>(z + i + kDoubleLanes)));
    const Doubles s0 = 1.0 / (e0 + 1.0), s1 = 1.0 / (e1 + 1.0);
    // From -kShortRange to kShortSlopeLimit.
    constexpr float kCentre = (kShortSlopeLimit - kShortRange) / 2, kReach = (kShortSlopeLimit + kShortRange) / 2;
    if (__builtin_expect(AnyBeyond(Load<Floats>(z + i) - kCentre, kReach) || AnyNearMiddle(s0, s1), 0)) {
      ActivateRow<Logistic>(z + i, kFloatLanes, a + i, slope + i);
      continue;
    }
    Store(Narrow(s0), a + i);
    Store(Narrow(s1), a + i + kDoubleLanes);
    Store(s0 * s0 * e0, slope + i);
    Store(s1 * s1 * e1, slope + i + kDoubleLanes);
  }
}

template <typename List>
struct ActivateTable;
template <typename... Kinds>
struct ActivateTable<KindList<Kinds...>> {
  static constexpr TrainActivation kRows[kActivationKinds] = {nullptr, ActivateRow<Kinds>...};
};

}  // namespace norv::NORV_LEVEL
