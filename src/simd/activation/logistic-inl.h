// A row of logistic functions, faster than Logistic::f and with its very results.
//
// Results are rounded to single precision, so that an exponential of some 40 bits decides nearly all of them. Where a
// value is too near to the middle between two floats, or out of the range that this covers, Logistic::f itself does the
// step. Only here may multiplications and additions be fused: the error bound covers it.
#pragma once

#include "simd/activation/rows-inl.h"

namespace norv::NORV_LEVEL {

inline constexpr double kShortExp2[] = {1.0,
                                        0.6931471805459335,
                                        0.2402265069581299,
                                        0.05550410941205933,
                                        0.009618129159402558,
                                        0.0013333450568000645,
                                        0.00015403455852453838,
                                        1.5310079402249296e-05,
                                        1.3255224878668817e-06};  // relative error below 2^-39.7 for -1/2 .. 1/2

inline constexpr float kShortRange = 87;

// exp(-x) with a relative error below 2^-39.5 for |x| <= kShortRange.
inline Doubles ShortExpOfNegative(Doubles x) {
  const Doubles log2e = Fill<Doubles>(-0x1.71547652b82fep+0);
  const Doubles shifted = MultiplyAddRoughly(x, log2e, Fill<Doubles>(kRounder));
  const Doubles r = MultiplyAddRoughly(x, log2e, -(shifted - kRounder));
  const auto c = [](int i) { return Fill<Doubles>(kShortExp2[i]); };
  const Doubles r2 = r * r;
  Doubles even = c(8), odd = c(7);
#pragma GCC unroll 4
  for (int i = 6; i >= 0; i -= 2) even = MultiplyAddRoughly(even, r2, c(i));
#pragma GCC unroll 4
  for (int i = 5; i >= 0; i -= 2) odd = MultiplyAddRoughly(odd, r2, c(i));
  const Doubles power = MultiplyAddRoughly(odd, r, even);
  return FromBits<Doubles>(ToBits(power) + (ToBits(shifted) << 52));
}

// 1 / (exp(-x) + 1) with a relative error below 2^-39 for |x| <= kShortRange.
inline Doubles ShortLogistic(Doubles x) { return 1.0 / (ShortExpOfNegative(x) + 1.0); }

// Whether any value of a or b is within 2^-37 of the middle between two floats, in parts of the value.
template <typename V>
inline bool AnyNearMiddle(V a, V b) {
  constexpr uint64_t kMiddle = uint64_t{1} << 28, kWindow = uint64_t{1} << 15;
  constexpr uint64_t kFar = (2 * kMiddle - 1) & ~(2 * kWindow - 1);  // bits that are all zero within the window
  return AnyWithout(ToBits(a) - (kMiddle - kWindow), ToBits(b) - (kMiddle - kWindow), kFar);
}

inline void LogisticRow(const float* x, float* y, int64_t n) {
  int64_t i = 0;
  for (; i + kFloatLanes <= n; i += kFloatLanes) {
    const HalfFloats first = Load<HalfFloats>(x + i), second = Load<HalfFloats>(x + i + kDoubleLanes);
    const Doubles a = ShortLogistic(Widen(first));
    const Doubles b = ShortLogistic(Widen(second));
    if (__builtin_expect(AnyBeyond(Load<Floats>(x + i), kShortRange) || AnyNearMiddle(a, b), 0)) {
      ActivationRow<Logistic>(x + i, y + i, kFloatLanes);
      continue;
    }
    Store(Narrow(a), y + i);
    Store(Narrow(b), y + i + kDoubleLanes);
  }
  ActivationRow<Logistic>(x + i, y + i, n - i);
}

template <>
inline constexpr RowFunction kActivationRow<Logistic> = LogisticRow;

}  // namespace norv::NORV_LEVEL
