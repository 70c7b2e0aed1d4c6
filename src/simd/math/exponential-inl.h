// Exponential functions and logarithms; see pairs-inl.h.
#pragma once

#include "simd/math/pairs-inl.h"

namespace norv::NORV_LEVEL {

inline constexpr double kLog2High = 0x1.62e42ff000000p-1;  // times any exponent without rounding
inline constexpr double kLog2Low = -0x1.718432a1b0e26p-35;

// 2^(k - less) of whole numbers, k - less from -1022 to 1023.
template <typename V>
inline V PowerOfTwo(V k, double less = 0) {
  return FromBits<V>(ToBits<V>(k + (kRounder + 1023 - less)) << 52);
}

inline constexpr double kExp[] = {0.5,
                                  0.1666666666666667,
                                  0.04166666666666667,
                                  0.008333333333326136,
                                  0.0013888888888883748,
                                  0.00019841269874820627,
                                  2.4801587325547743e-05,
                                  2.7557255400206422e-06,
                                  2.75572736431103e-07,
                                  2.5105217004720745e-08,
                                  2.0914686968086876e-09};

// exp(x + tail) as a power of two k and a factor from 0.7 to 1.42, for |x| < 800 and |tail| < 2^-40.
template <typename V>
struct Scaled {
  V factor, k;
};

template <typename V, bool withTail>
inline Scaled<V> ExpScaled(V x, V tail) {
  const V k = (x * 0x1.71547652b82fep+0 + kRounder) - kRounder;
  const V high = x - k * kLog2High;
  V low = k * kLog2Low;
  if constexpr (withTail) low = low - tail;
  const V r = high - low;
  const Pair<V> sum = OrderedSum(Fill<V>(1), high);
  return {sum.high + (sum.low + (r * r * Polynomial(r, kExp) - low)), k};
}

template <typename V>
inline V Between(V x, double low, double high) {
  x = x < low ? Fill<V>(low) : x;
  return x > high ? Fill<V>(high) : x;
}

template <typename V, bool withTail>
inline V ExpOfSum(V x, V tail) {
  const Scaled<V> y = ExpScaled<V, withTail>(Between(x, -746, 710), tail);
  // In two steps, as the ends of the range are beyond the powers of two that a double holds.
  const V half = (y.k * 0.5 + kRounder) - kRounder;
  return y.factor * PowerOfTwo(half) * PowerOfTwo<V>(y.k - half);
}

template <typename V>
inline V Exp(V x) {
  return ExpOfSum<V, false>(x, V{});
}

// Exp with x moved to the nearest of -limit and limit; limit up to 700.
template <typename V>
inline V ExpWithin(V x, double limit) {
  const Scaled<V> y = ExpScaled<V, false>(Between(x, -limit, limit), V{});
  return y.factor * PowerOfTwo(y.k);
}

// Exp with x moved to `low`, -700 or more, where it is below.
template <typename V>
inline V ExpAbove(V x, double low) {
  const Scaled<V> y = ExpScaled<V, false>(Between(x, low, 710), V{});
  return y.factor * PowerOfTwo(y.k, 1) * 2.0;  // as the largest k is beyond the powers of two that a double holds
}

// x = 2^k (1 + f), 1 + f from sqrt(1/2) to sqrt(2), for positive finite x.
template <typename V>
struct Binary {
  V k, f;
};

template <typename V>
inline Binary<V> SplitBinary(V x) {
  constexpr uint64_t kRootHalf = 0x3fe6a09e667f3bcd, kOne = 0x3ff0000000000000, kMantissa = 0x000fffffffffffff;
  const auto subnormal = x < 0x1p-1022;
  const Like<V, uint64_t> bits = ToBits<V>(subnormal ? x * 0x1p54 : x) + (kOne - kRootHalf);
  const V exponent = FromBits<V>((bits >> 52) | 0x4330000000000000) - (0x1p52 + 1023);
  return {subnormal ? exponent - 54.0 : exponent, FromBits<V>((bits & kMantissa) + kRootHalf) - 1.0};
}

// What a logarithm of x is where the general way does not hold.
template <typename V>
inline V LogAtEnds(V x, V log) {
  log = x <= kLargest ? log : x;
  log = x < 0.0 ? Fill<V>(__builtin_nan("")) : log;
  return x == 0.0 ? Fill<V>(-kInfinity) : log;
}

inline constexpr double kLog[] = {0.666666666666667,   0.39999999999899444, 0.2857142862600327, 0.22222211130259878,
                                  0.18182889455674947, 0.15331710618210773, 0.14616585424888623};

// With s = f / (2 + f): log(1 + f) = f - f^2 / 2 + s (f^2 / 2 + R(s^2)), as in Tang 1990.
template <typename V>
inline V Log(V x) {
  const Binary<V> parts = SplitBinary(x);
  const V k = parts.k, f = parts.f, s = f / (f + 2.0), u = s * s;
  const V fHigh = FromBits<V>(ToBits(f) & 0xfffffffff8000000), fLow = f - fHigh;
  const V half = fHigh * fHigh * 0.5, halfLow = (f + fHigh) * fLow * 0.5;
  const Pair<V> a = OrderedSum<V>(k * kLog2High, f);
  const Pair<V> b = OrderedSum<V>(a.high, -half);
  const V low = (s * ((half + halfLow) + u * Polynomial(u, kLog)) + k * kLog2Low) - halfLow;
  return LogAtEnds<V>(x, b.high + (b.low + (a.low + low)));
}

inline constexpr double kLogPair[] = {0.4,
                                      0.28571428571428564,
                                      0.2222222222222843,
                                      0.18181818179656925,
                                      0.15384615761170173,
                                      0.13333296534432942,
                                      0.11766813121034216,
                                      0.10456327269484458,
                                      0.10762424419565246};

// log x of a positive finite x to 65 bits: 2 s + 2/3 s^3 + s^5 Q(s^2).
template <typename V>
inline Pair<V> LogPair(V x) {
  constexpr double kThirds = 0x1.5555555555555p-1, kThirdsLow = 0x1.5555555555555p-55;
  const Binary<V> parts = SplitBinary(x);
  const Pair<V> s = Quotient<V>({parts.f, V{}}, OrderedSum<V>(Fill<V>(2), parts.f));
  const Pair<V> square = Product(s.high, s.high);
  const V u = square.high, uLow = square.low + 2.0 * s.high * s.low;
  const Pair<V> cubic = Product<V>(u, Fill<V>(kThirds));
  const Pair<V> t = OrderedSum<V>(cubic.high, u * u * Polynomial(u, kLogPair));
  const V tLow = t.low + (cubic.low + (u * kThirdsLow + uLow * kThirds));
  const Pair<V> st = Product(s.high, t.high);
  const Pair<V> sum = OrderedSum<V>(2.0 * s.high, st.high);
  const V low = sum.low + (st.low + (s.high * tLow + (s.low * t.high + 2.0 * s.low)));
  const Pair<V> all = OrderedSum<V>(parts.k * kLog2High, sum.high);
  return OrderedSum<V>(all.high, all.low + (low + parts.k * kLog2Low));
}

// x to the power y for x >= 0.
template <typename V>
inline V Pow(V x, V y) {
  const auto regular = (x > 0.0) & (x <= kLargest);
  const Pair<V> log = LogPair<V>(regular ? x : Fill<V>(1));
  const V bounded = Between(y, -0x1p70, 0x1p70);  // where every base but 1 has left the range of doubles
  const Pair<V> exponent = Product(bounded, log.high);
  const auto inside = Abs(exponent.high) < 1000.0;
  V power = ExpOfSum<V, true>(exponent.high, inside ? exponent.low + bounded * log.low : V{});
  const auto growing = (x == 0.0) == (y < 0.0);  // of the bases 0 and infinity
  power = regular ? power : (growing ? Fill<V>(kInfinity) : V{});
  power = (x != x) | (y != y) | (x < 0.0) ? Fill<V>(__builtin_nan("")) : power;
  return (y == 0.0) | (x == 1.0) ? Fill<V>(1) : power;
}

}  // namespace norv::NORV_LEVEL
