// What the elementary functions are made of: sums and products that keep their rounding errors (Dekker 1971), and
// polynomials.
//
// The functions are written once for a double and for a vector of doubles: the same operations in the same order, none
// of them fused, so that every level and platform gets the same bits. Arguments are reduced to a small interval, a
// polynomial (tools/fit_polynomials) gives what is beyond the leading terms, and the leading terms are summed with the
// rounding errors of each sum kept, which leaves 0.5 to 0.8 units in the last place.
#pragma once

#include "simd/vector-inl.h"

namespace norv::NORV_LEVEL {

inline constexpr double kInfinity = __builtin_inf();
inline constexpr double kLargest = 0x1.fffffffffffffp1023;

// Added and subtracted again, it rounds to a whole number, which the low bits of the sum hold meanwhile.
inline constexpr double kRounder = 0x1.8p52;

// The value high + low, low below the precision of high.
template <typename V>
struct Pair {
  V high, low;
};

// a + b with its rounding error; the magnitude of a is not smaller than that of b, or a is 0.
template <typename V>
inline Pair<V> OrderedSum(V a, V b) {
  const V sum = a + b;
  return {sum, b - (sum - a)};
}

// The same for any a and b (Knuth).
template <typename V>
inline Pair<V> Sum(V a, V b) {
  const V sum = a + b, bPart = sum - a;
  return {sum, (a - (sum - bPart)) + (b - bPart)};
}

// The leading 26 bits and the others, both short enough for products without rounding.
template <typename V>
inline Pair<V> Halves(V a) {
  const V shifted = a * 134217729.0, high = shifted - (shifted - a);
  return {high, a - high};
}

// a b with its rounding error; magnitudes below 2^990.
template <typename V>
inline Pair<V> Product(V a, V b) {
  const V product = a * b;
  const Pair<V> x = Halves(a), y = Halves(b);
  return {product, ((x.high * y.high - product) + x.high * y.low + x.low * y.high) + x.low * y.low};
}

// numerator / denominator
template <typename V>
inline Pair<V> Quotient(Pair<V> numerator, Pair<V> denominator) {
  const V quotient = numerator.high / denominator.high;
  const Pair<V> back = Product(quotient, denominator.high);
  const V rest = ((numerator.high - back.high) - back.low) + (numerator.low - quotient * denominator.low);
  return {quotient, rest / denominator.high};
}

// c[0] + c[1] x + ..., even and odd powers apart: two short chains instead of a long one.
template <typename V, int count>
inline V Polynomial(V x, const double (&c)[count]) {
  const V square = x * x;
  V even = Fill<V>(c[(count - 1) / 2 * 2]), odd = Fill<V>(c[count / 2 * 2 - 1]);
#pragma GCC unroll 16
  for (int i = (count - 1) / 2 * 2 - 2; i >= 0; i -= 2) even = even * square + c[i];
#pragma GCC unroll 16
  for (int i = count / 2 * 2 - 3; i >= 0; i -= 2) odd = odd * square + c[i];
  return even + x * odd;
}

}  // namespace norv::NORV_LEVEL
