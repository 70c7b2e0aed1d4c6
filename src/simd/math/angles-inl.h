// Functions of angles and their inverses; see pairs-inl.h.
#pragma once

#include "simd/math/pairs-inl.h"

namespace norv::NORV_LEVEL {

inline constexpr double kHalfPi = 0x1.921fb54442d18p+0, kHalfPiLow = 0x1.1a62633145c07p-54;

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
