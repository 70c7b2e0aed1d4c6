// Elementary functions, written once for a double and for a vector of doubles: the same operations in the same order,
// none of them fused, so that every level and platform gets the same bits.
//
// Arguments are reduced to a small interval, a polynomial (tools/fit_polynomials) gives what is beyond the leading
// terms, and the leading terms are summed with the rounding errors of each sum kept (Dekker 1971), which leaves
// 0.5 to 0.8 units in the last place.
#pragma once

#include "simd/vector-inl.h"

namespace norv::NORV_LEVEL {

inline constexpr double kInfinity = __builtin_inf();
inline constexpr double kLargest = 0x1.fffffffffffffp1023;
inline constexpr double kLog2High = 0x1.62e42ff000000p-1;  // times any exponent without rounding
inline constexpr double kLog2Low = -0x1.718432a1b0e26p-35;
inline constexpr double kHalfPi = 0x1.921fb54442d18p+0, kHalfPiLow = 0x1.1a62633145c07p-54;

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

// 2^k of a whole number k, -1022 .. 1023.
template <typename V>
inline V PowerOfTwo(V k) {
  return FromBits<V>(ToBits<V>(k + (kRounder + 1023)) << 52);
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

inline constexpr double kAtan[] = {-0.3333333333333333,  0.19999999999999804,  -0.14285714285659779,
                                   0.11111111105150588,  -0.09090908753259112, 0.07692296368042296,
                                   -0.0666642476020052,  0.05878927554473807,  -0.05230443640686948,
                                   0.045515447340221615, -0.03456931506332609, 0.016284375050043393};

// The angle from 0 to pi / 4 whose tangent is a / b, 0 <= a <= b, b from 2^-500 to 2^500.
template <typename V>
inline Pair<V> AngleOf(Pair<V> a, Pair<V> b) {
  const auto steep = a.high > 0x1.a827999fcef32p-2 * b.high;  // tan(pi / 8): then relative to pi / 4
  const Pair<V> difference = OrderedSum<V>(-b.high, a.high), sum = OrderedSum<V>(b.high, a.high);
  const Pair<V> r = Quotient<V>({steep ? difference.high : a.high, steep ? difference.low + (a.low - b.low) : a.low},
                                {steep ? sum.high : b.high, steep ? sum.low + (a.low + b.low) : b.low});
  const V u = r.high * r.high;
  const V low = r.high * u * Polynomial(u, kAtan) + (r.low - r.low * u);
  const Pair<V> angle = OrderedSum<V>(steep ? Fill<V>(kHalfPi / 2) : V{}, r.high);
  return {angle.high, angle.low + (steep ? low + kHalfPiLow / 2 : low)};
}

// angle, or its difference to factor times pi / 2.
template <typename V, typename Mask>
inline Pair<V> Mirrored(Pair<V> angle, Mask mirror, double factor) {
  const Pair<V> difference = OrderedSum<V>(Fill<V>(kHalfPi * factor), -angle.high);
  return {mirror ? difference.high : angle.high,
          mirror ? difference.low + (kHalfPiLow * factor - angle.low) : angle.low};
}

template <typename V>
inline V Atan(V x) {
  const V magnitude = Abs(x), bounded = magnitude > 0x1p200 ? Fill<V>(0x1p200) : magnitude;
  const auto steep = bounded > 1.0;
  const Pair<V> angle = AngleOf<V>({steep ? Fill<V>(1) : bounded, V{}}, {steep ? bounded : Fill<V>(1), V{}});
  const Pair<V> whole = Mirrored(angle, steep, 1);
  return WithSignOf<V>(whole.high + whole.low, x);
}

template <typename V>
inline V Atan2(V y, V x) {
  V rise = Abs(y), run = Abs(x);
  const auto steep = rise > run;
  V a = steep ? run : rise, b = steep ? rise : run;
  a = b > kLargest ? (a > kLargest ? Fill<V>(1) : V{}) : a;
  b = (b > kLargest) | (b == 0.0) ? Fill<V>(1) : b;
  // Scaled so that no product of the angle leaves the range, but for those slopes that are their own angle.
  const V scale = b < 0x1p-500 ? Fill<V>(0x1p600) : (b > 0x1p500 ? Fill<V>(0x1p-600) : Fill<V>(1));
  const auto flat = a * scale < b * scale * 0x1p-100;
  Pair<V> angle = AngleOf<V>({flat ? V{} : a * scale, V{}}, {b * scale, V{}});
  angle.high = flat ? a / b : angle.high;
  angle = Mirrored(angle, steep, 1);
  angle = Mirrored(angle, (ToBits(x) >> 63) != 0, 2);
  const V result = WithSignOf<V>(angle.high + angle.low, y);
  return (x != x) | (y != y) ? x + y : result;
}

// The angle between (x, sqrt(1 - x^2)) and the x axis.
template <typename V>
inline V Acos(V x) {
  const V run = Abs(x);
  const Pair<V> square = Product(run, run);
  const Pair<V> rest = OrderedSum<V>(Fill<V>(1), -square.high);
  const V root = Sqrt(rest.high);
  const Pair<V> back = Product(root, root);
  const V low = (((rest.high - back.high) - back.low) + (rest.low - square.low)) / (2.0 * root);
  const Pair<V> rise{root, root > 0.0 ? low : V{}};
  const auto steep = rise.high > run;
  const Pair<V> angle =
      AngleOf<V>({steep ? run : rise.high, steep ? V{} : rise.low}, {steep ? rise.high : run, steep ? rise.low : V{}});
  const Pair<V> whole = Mirrored(Mirrored(angle, steep, 1), x < 0.0, 2);
  const V result = whole.high + whole.low;
  return run <= 1.0 ? result : Fill<V>(__builtin_nan(""));
}

// x = quadrant pi / 2 + r, |r| up to pi / 4; the quadrant counts from 0 to 3.
template <typename V>
struct Quadrant {
  Pair<V> r;
  V quadrant;
};

// Bits of 2 / pi behind the point.
inline constexpr uint64_t kTwoOverPi[] = {
    0xa2f9836e4e441529, 0xfc2757d1f534ddc0, 0xdb6295993c439041, 0xfe5163abdebbc561, 0xb7246e3a424dd2e0,
    0x06492eea09d1921c, 0xfe1deb1cb129a73e, 0xe88235f52ebb4484, 0xe99c7026b45f7e41, 0x3991d639835339f4,
    0x9c845f8bbdf9283b, 0x1ff897ffde05980f, 0xef2f118b5a0a6d1f, 0x6d367ecf27cb09b7, 0x4f463f669e5fea2d,
    0x7527bac7ebe5f17b, 0x3d0739f78a5292ea, 0x6bfb5fb11f8d5d08, 0x56033046fc7b6bab, 0xf0cfbc209af4361d};

// 64 of them from the given one on; zeros before the first.
inline uint64_t TwoOverPiBits(int from) {
  if (from <= -64) return 0;
  if (from < 0) return kTwoOverPi[0] >> -from;
  const int word = from / 64, shift = from % 64;
  return shift ? (kTwoOverPi[word] << shift) | (kTwoOverPi[word + 1] >> (64 - shift)) : kTwoOverPi[word];
}

// For 64 <= |x| < infinity (Payne and Hanek 1983): the mantissa of x as a whole number, times those 192 bits of 2 / pi
// that matter, modulo 4.
inline Quadrant<double> ReduceLarge(double x) {
  using Wide = unsigned __int128;
  const uint64_t bits = ToBits(x), mantissa = (bits & 0x000fffffffffffff) | 0x0010000000000000;
  const int from = static_cast<int>((bits >> 52) & 0x7ff) - 1077;  // the bit whose product has the weight 2
  const Wide low = Wide{TwoOverPiBits(from + 128)} * mantissa;
  const Wide middle = Wide{TwoOverPiBits(from + 64)} * mantissa + static_cast<uint64_t>(low >> 64);
  const Wide product = (Wide{TwoOverPiBits(from) * mantissa} << 64) + middle;
  const __int128 fraction = static_cast<__int128>(product << 2) >> 1;  // -1/2 .. 1/2, times 2^127
  const double high = static_cast<double>(fraction);
  const double rest = static_cast<double>(fraction - static_cast<__int128>(high));
  const Pair<double> angle = Product(high * 0x1p-127, kHalfPi);
  const Pair<double> r = OrderedSum(angle.high, angle.low + (rest * 0x1p-127 * kHalfPi + high * 0x1p-127 * kHalfPiLow));
  const double quadrant = static_cast<double>(((product >> 125) + 1) >> 1 & 3);
  if (bits >> 63) return {{-r.high, -r.low}, 4 - quadrant};
  return {r, quadrant};
}

// 0 for an infinite or undefined x, which the caller sees to.
template <typename V>
inline Quadrant<V> Reduce(V x) {
  constexpr double kLimit = 1000;  // up to here the products with the first two parts of pi / 2 are exact
  const auto far = Abs(x) > kLimit;
  const V near = Abs(x) <= kLimit ? x : V{};
  const V k = (near * 0x1.45f306dc9c883p-1 + kRounder) - kRounder;
  const V first = near - k * 0x1.921fb54400000p+0;
  const Pair<V> second = Sum<V>(first, -(k * 0x1.0b4611a600000p-34));
  Quadrant<V> result{OrderedSum<V>(second.high, second.low - k * 0x1.3198a2e037073p-69), k};
  if (!AnyLane(far)) return result;
  double xs[sizeof(V) / 8], highs[sizeof(V) / 8], lows[sizeof(V) / 8], ks[sizeof(V) / 8];
  Store(x, xs), Store(result.r.high, highs), Store(result.r.low, lows), Store(k, ks);
  for (size_t i = 0; i < sizeof(V) / 8; ++i) {
    if (!(Abs(xs[i]) > kLimit && Abs(xs[i]) <= kLargest)) continue;
    const Quadrant<double> lane = ReduceLarge(xs[i]);
    highs[i] = lane.r.high, lows[i] = lane.r.low, ks[i] = lane.quadrant;
  }
  return {{Load<V>(highs), Load<V>(lows)}, Load<V>(ks)};
}

inline constexpr double kSin[] = {-0.16666666666666666,   0.008333333333333331,    -0.00019841269841265063,
                                  2.7557319219337312e-06, -2.5052106231802837e-08, 1.6058531516797758e-10,
                                  -7.586691094197958e-13};
inline constexpr double kCos[] = {0.041666666666666664,   -0.0013888888888888887, 2.4801587301584645e-05,
                                  -2.755731922140179e-07, 2.0876755790721963e-09, -1.1470460830795304e-11,
                                  4.745868553081665e-14};

// The sine of x + turns pi / 2.
template <typename V>
inline V SinTurned(V x, double turns) {
  const Quadrant<V> reduced = Reduce(x);
  const V r = reduced.r.high, rLow = reduced.r.low, u = r * r;
  const V sine = r + (r * u * Polynomial(u, kSin) + (rLow - rLow * u * 0.5));
  const V head = FromBits<V>(ToBits(r) & 0xfffffffff8000000);
  const V half = head * head * 0.5, halfLow = (r - head) * (r + head) * 0.5;
  const Pair<V> sum = OrderedSum<V>(Fill<V>(1), -half);
  const V cosine = sum.high + (sum.low + (u * u * Polynomial(u, kCos) - (halfLow + r * rLow)));
  const Like<V, uint64_t> quadrant = ToBits<V>(reduced.quadrant + turns + kRounder);
  const V value = (quadrant & 1) != 0 ? cosine : sine;
  return FromBits<V>(ToBits(value) ^ ((quadrant & 2) << 62));
}

template <typename V>
inline V Sin(V x) {
  const V sine = SinTurned(x, 0);
  return Abs(x) <= kLargest ? (Abs(x) < 0x1p-27 ? x : sine) : x - x;
}

template <typename V>
inline V Cos(V x) {
  const V cosine = SinTurned(x, 1);
  return Abs(x) <= kLargest ? cosine : x - x;
}

}  // namespace norv::NORV_LEVEL
