// Bodies of the restoration's row kernels: one formula each, written once for a vector of eight floats and for the
// single floats of the tail. To be included by the file of one level, with NORV_LEVEL naming a namespace of its own and
// NORV_VECTOR_BYTES the level's vectors.
#pragma once

#include "simd/math/math-inl.h"
#include "simd/restore/kernels.h"

namespace norv::NORV_LEVEL {
namespace {

using Whole = Vec<int32_t, 8>;
using Eight = Vec<float, 8>;  // at every level: wider ones gave nothing

// Starts to fetch what a stream of rows will be asked for soon: the hardware's own prefetching ends at every page,
// which is every row of a megapixel plane.
constexpr int64_t kAhead = 512;
inline void Prefetch(const float* p) { __builtin_prefetch(p + kAhead); }

// body(V{}, i) for whole vectors, then for single elements.
template <typename Body>
inline void ForRow(int64_t n, const Body& body) {
  int64_t i = 0;
  for (; i + 8 <= n; i += 8) body(Eight{}, i);
  for (; i < n; ++i) body(float{}, i);
}

// sums[i mod 8] += value(V{}, i) for i < n.
template <typename Value>
inline void SumRow(double* sums, int64_t n, const Value& value) {
  using FourDoubles = Vec<double, 4>;
  FourDoubles low = Load<FourDoubles>(sums), high = Load<FourDoubles>(sums + 4);
  int64_t i = 0;
  for (; i + 8 <= n; i += 8) {
    const Eight v = value(Eight{}, i);
    low += Widen(LowHalf(v));
    high += Widen(HighHalf(v));
  }
  Store(low, sums);
  Store(high, sums + 4);
  for (int64_t lane = 0; i < n; ++i, ++lane) sums[lane] += static_cast<double>(value(float{}, i));
}

// ------------------------------------------------------------------------------------------ rows and their phases

// Sums of this many vectors stay in registers while the rows pass.
constexpr int64_t kSums = 4;

inline void CombineBlock(float* out, const float* const* rows, const float* taps, int64_t count, int64_t j) {
  Eight sum[kSums] = {};
  for (int64_t i = 0; i < count; ++i)
    for (int64_t k = 0; k < kSums; ++k) sum[k] += taps[i] * Load<Eight>(rows[i] + j + k * 8);
  for (int64_t k = 0; k < kSums; ++k) Store(sum[k], out + j + k * 8);
}

void CombineRows(float* out, const float* const* rows, const float* taps, int64_t count, int64_t n) {
  int64_t j = 0;
  for (; j + kSums * 8 <= n; j += kSums * 8) CombineBlock(out, rows, taps, count, j);
  const auto combine = [&](auto one, int64_t k) {
    auto sum = one;
    for (int64_t i = 0; i < count; ++i) sum += taps[i] * Load<decltype(one)>(rows[i] + j + k);
    Store(sum, out + j + k);
  };
  ForRow(n - j, combine);
}

template <int64_t kFactor>
void SplitBy(float* phases, int64_t stride, const float* line, int64_t f, int64_t n) {
  const int64_t factor = kFactor ? kFactor : f;
  for (int64_t p = 0; p < factor; ++p)
    for (int64_t j = 0; j < n; ++j) phases[p * stride + j] = line[factor * j + p];
}

void SplitPhases(float* phases, int64_t stride, const float* line, int64_t f, int64_t n) {
  const auto split = f == 2 ? SplitBy<2> : f == 3 ? SplitBy<3> : f == 4 ? SplitBy<4> : SplitBy<0>;
  split(phases, stride, line, f, n);
}

template <int64_t kFactor>
void JoinBy(float* __restrict line, const float* __restrict phases, int64_t stride, int64_t f, int64_t n) {
  const int64_t factor = kFactor ? kFactor : f;
  for (int64_t j = 0; j < n; ++j)
    for (int64_t p = 0; p < factor; ++p) line[factor * j + p] = phases[p * stride + j];
}

void JoinPhases(float* line, const float* phases, int64_t stride, int64_t f, int64_t n) {
  const auto join = f == 2 ? JoinBy<2> : f == 3 ? JoinBy<3> : f == 4 ? JoinBy<4> : JoinBy<0>;
  join(line, phases, stride, f, n);
}

// ------------------------------------------------------------------------------------------------- plain rows

void ScaleAndAdd(float* y, float s, const float* x, int64_t n) {
  ForRow(n, [&](auto one, int64_t i) {
    using V = decltype(one);
    Prefetch(y + i);
    Prefetch(x + i);
    Store(s * Load<V>(y + i) + Load<V>(x + i), y + i);
  });
}

void AddScaled(float* y, float s, const float* x, int64_t n) {
  ForRow(n, [&](auto one, int64_t i) {
    using V = decltype(one);
    Prefetch(y + i);
    Prefetch(x + i);
    Store(Load<V>(y + i) + s * Load<V>(x + i), y + i);
  });
}

void AddDifferences(float* y, const float* a, const float* b, const float* c, const float* d, int64_t n) {
  ForRow(n, [&](auto one, int64_t i) {
    using V = decltype(one);
    Store(Load<V>(y + i) + ((Load<V>(a + i) - Load<V>(b + i)) + (Load<V>(c + i) - Load<V>(d + i))), y + i);
  });
}

void AddSquares(double* sums, const float* x, int64_t n) {
  SumRow(sums, n, [&](auto one, int64_t i) {
    const auto v = Load<decltype(one)>(x + i);
    return v * v;
  });
}

void AddDifferenceSquares(double* sums, const float* a, const float* b, const float* w, int64_t n) {
  SumRow(sums, n, [&](auto one, int64_t i) {
    using V = decltype(one);
    Prefetch(w + i);
    const V q = Load<V>(w + i) * (Load<V>(a + i) - Load<V>(b + i));
    return q * q;
  });
}

// ------------------------------------------------------------------------------------------- weighted differences

template <typename V>
inline V First(CellRow x, int64_t i) {
  return Load<V>(x.lower + i + x.next) - Load<V>(x.upper + i);
}
template <typename V>
inline V Second(CellRow x, int64_t i) {
  return Load<V>(x.lower + i) - Load<V>(x.upper + i + x.next);
}
template <typename V>
inline V Cross(CellRow x, DirectionRow u, int64_t i) {
  return First<V>(x, i) * Load<V>(u.u2 + i) - Second<V>(x, i) * Load<V>(u.u1 + i);
}
template <typename V>
inline V Dot(CellRow x, DirectionRow u, int64_t i) {
  return First<V>(x, i) * Load<V>(u.u1 + i) + Second<V>(x, i) * Load<V>(u.u2 + i);
}

// s -= alpha q; returns the new s.
template <typename V>
inline V Advance(float* s, float alpha, V q) {
  const V advanced = Load<V>(s) - alpha * q;
  Store(advanced, s);
  return advanced;
}

void IsotropicSquares(double* sums, CellRow p, const float* w, int64_t n) {
  SumRow(sums, n, [&](auto one, int64_t i) {
    using V = decltype(one);
    Prefetch(w + i);
    const V q1 = Load<V>(w + i) * First<V>(p, i), q2 = Load<V>(w + i) * Second<V>(p, i);
    return q1 * q1 + q2 * q2;
  });
}

void IsotropicStep(CellRow p, const float* w, float alpha, float* s1, float* s2, CornerRow out, int64_t n) {
  ForRow(n, [&](auto one, int64_t i) {
    using V = decltype(one);
    Prefetch(w + i);
    Prefetch(s1 + i);
    Prefetch(s2 + i);
    const V weight = Load<V>(w + i);
    Store(weight * Advance(s1 + i, alpha, weight * First<V>(p, i)), out.first + i);
    Store(weight * Advance(s2 + i, alpha, weight * -Second<V>(p, i)), out.second + i);
  });
}

void CrossSquares(double* sums, CellRow p, DirectionRow u, const float* w, int64_t n) {
  SumRow(sums, n, [&](auto one, int64_t i) {
    using V = decltype(one);
    Prefetch(w + i);
    Prefetch(u.u1 + i);
    Prefetch(u.u2 + i);
    const V q = Load<V>(w + i) * Cross<V>(p, u, i);
    return q * q;
  });
}

void CrossStep(CellRow p, DirectionRow u, const float* w, float alpha, float* s, CornerRow out, int64_t n) {
  ForRow(n, [&](auto one, int64_t i) {
    using V = decltype(one);
    Prefetch(w + i);
    Prefetch(s + i);
    Prefetch(u.u1 + i);
    Prefetch(u.u2 + i);
    const V weight = Load<V>(w + i), a = weight * Advance(s + i, alpha, weight * Cross<V>(p, u, i));
    Store(a * Load<V>(u.u2 + i), out.first + i);
    Store(a * Load<V>(u.u1 + i), out.second + i);
  });
}

void ScaledCrossSquares(double* sums, CellRow p, DirectionRow u, int64_t n) {
  SumRow(sums, n, [&](auto one, int64_t i) {
    Prefetch(u.u1 + i);
    Prefetch(u.u2 + i);
    const auto q = Cross<decltype(one)>(p, u, i);
    return q * q;
  });
}

void ScaledCrossStep(CellRow p, DirectionRow u, float alpha, float* s, CornerRow out, int64_t n) {
  ForRow(n, [&](auto one, int64_t i) {
    using V = decltype(one);
    Prefetch(s + i);
    Prefetch(u.u1 + i);
    Prefetch(u.u2 + i);
    const V a = Advance(s + i, alpha, Cross<V>(p, u, i));
    Store(a * Load<V>(u.u2 + i), out.first + i);
    Store(a * Load<V>(u.u1 + i), out.second + i);
  });
}

void DirectionalSquares(double* sums, CellRow p, DirectionRow u, const float* w, const float* v, int64_t n) {
  SumRow(sums, n, [&](auto one, int64_t i) {
    using V = decltype(one);
    Prefetch(w + i);
    Prefetch(v + i);
    Prefetch(u.u1 + i);
    Prefetch(u.u2 + i);
    const V cross = Load<V>(w + i) * Cross<V>(p, u, i), dot = Load<V>(v + i) * Dot<V>(p, u, i);
    return cross * cross + dot * dot;
  });
}

void DirectionalStep(CellRow p, DirectionRow u, const float* w, const float* v, float alpha, float* s, float* t,
                     CornerRow out, int64_t n) {
  ForRow(n, [&](auto one, int64_t i) {
    using V = decltype(one);
    Prefetch(w + i);
    Prefetch(v + i);
    Prefetch(s + i);
    Prefetch(t + i);
    Prefetch(u.u1 + i);
    Prefetch(u.u2 + i);
    const V across = Load<V>(w + i), along = Load<V>(v + i), u1 = Load<V>(u.u1 + i), u2 = Load<V>(u.u2 + i);
    const V a = across * Advance(s + i, alpha, across * Cross<V>(p, u, i));
    const V b = along * Advance(t + i, alpha, along * Dot<V>(p, u, i));
    Store(a * u2 + b * u1, out.first + i);
    Store(a * u1 - b * u2, out.second + i);
  });
}

void DifferenceStep(const float* a, const float* b, const float* w, float alpha, float* s, float* out, int64_t n) {
  ForRow(n, [&](auto one, int64_t i) {
    using V = decltype(one);
    Prefetch(w + i);
    Prefetch(s + i);
    const V weight = Load<V>(w + i);
    Store(weight * Advance(s + i, alpha, weight * (Load<V>(a + i) - Load<V>(b + i))), out + i);
  });
}

// ------------------------------------------------------------------------------------------ measures and weights

void MeasureIsotropic(float* out, CellRow x, int64_t n) {
  ForRow(n, [&](auto one, int64_t i) {
    using V = decltype(one);
    const V d1 = First<V>(x, i), d2 = Second<V>(x, i);
    Store(d1 * d1 + d2 * d2, out + i);
  });
}

void MeasureCross(float* out, CellRow x, DirectionRow u, int64_t n) {
  ForRow(n, [&](auto one, int64_t i) { Store(Cross<decltype(one)>(x, u, i), out + i); });
}

void MeasureDot(float* out, CellRow x, DirectionRow u, int64_t n) {
  ForRow(n, [&](auto one, int64_t i) { Store(Dot<decltype(one)>(x, u, i), out + i); });
}

void MeasureDifference(float* out, const float* a, const float* b, int64_t n) {
  ForRow(n, [&](auto one, int64_t i) { Store(Load<decltype(one)>(a + i) - Load<decltype(one)>(b + i), out + i); });
}

void SquareRoots(float* x, int64_t n) {
  ForRow(n, [&](auto one, int64_t i) { Store(Sqrt(Load<decltype(one)>(x + i)), x + i); });
}

void Huber(float* x, float lambda, float delta, int64_t n) {
  ForRow(n, [&](auto one, int64_t i) {
    using V = decltype(one);
    const V g = Abs(Load<V>(x + i));
    const V beyond = lambda * Sqrt((2 * g - delta) * delta) / g, inside = V{} + lambda;
    Store(g <= delta ? inside : beyond, x + i);
  });
}

// x = body(x) of eight values at a time, the last block filled up with ones.
template <typename Body>
inline void ForBlocks(float* x, int64_t n, const Body& body) {
  int64_t i = 0;
  for (; i + 8 <= n; i += 8) Store(body(Load<Eight>(x + i)), x + i);
  StorePart(body(LoadPart(x + i, n - i, Fill<Eight>(1))), x + i, n - i);
}

// body(value, is a vector) of every element as a double, whole vectors first; the result rounded.
template <typename Body>
inline void ForRowInDouble(float* x, int64_t n, const Body& body) {
  int64_t i = 0;
  for (; i + kDoubleLanes <= n; i += kDoubleLanes) Store(Narrow(body(Widen(Load<HalfFloats>(x + i)))), x + i);
  for (; i < n; ++i) x[i] = static_cast<float>(body(static_cast<double>(x[i])));
}

void Lorentzian(float* x, double lambda, double sigma, bool squared, int64_t n) {
  ForRowInDouble(x, n, [&](auto value) {
    using V = decltype(value);
    const V g2 = squared ? value : value * value;
    const V beyond = lambda * Sqrt(NORV_LEVEL::Log(1 + g2 / (sigma * sigma)) / g2);
    return g2 > 1e-10 ? beyond : Fill<V>(lambda / sigma);
  });
}

constexpr int32_t kRootHalf = 0x3f3504f3;

// ln |x| of normal floats: with 1 + f = |x| / 2^k near 1 and s = f / (2 + f), k ln 2 + 2 s (1 + s^2 / 3 + ...).
inline Eight LogOf(Eight x) {
  const Whole bits = (__builtin_bit_cast(Whole, x) & 0x7fffffff) - kRootHalf;
  const Eight k = Convert<float>(bits >> 23);
  const Eight f = __builtin_bit_cast(Eight, (bits & 0x007fffff) + kRootHalf) - 1;
  const Eight s = f / (2 + f), u = s * s;
  const Eight beyond = s * u * (0.6666667f + u * (0.4f + u * (0.2857143f + u * 0.2222222f)));
  return k * 0.693359375f + (2 * s + (beyond - k * 2.1219444e-4f));
}

// e^x - 1 without cancellation for x > -87; x beyond 87 counts as that.
inline Eight ExpLessOne(Eight x) {
  constexpr float kRound = 0x1.8p23f;
  const Eight bounded = x > 87 ? Eight{} + 87 : x;
  const Eight k = (bounded * 1.4426950f + kRound) - kRound;
  const Eight r = (bounded - k * 0.693359375f) + k * 2.1219444e-4f;
  const Eight tail = 0.16666667f + r * (0.041666667f + r * (0.0083333333f + r * (1.3888889e-3f + r * 1.9841270e-4f)));
  const Eight scale = __builtin_bit_cast(Eight, (Convert<int32_t>(k) + 127) << 23);
  return scale * (r + r * r * (0.5f + r * tail)) + (scale - 1);
}

// g / delta to the power of the shape is the exponential of a product; a shape of 0 is the limit of small ones.
void Shaped(float* x, float lambda, float delta, float shape, int64_t n) {
  const float inverse = 1 / delta, strength = delta >= 0 ? lambda : __builtin_nanf("");
  ForBlocks(x, n, [&](Eight value) {
    const Eight g = Abs(value), t = g * inverse, log = LogOf(t);
    const Eight penalty = 1 + 2 * (shape > 0 ? ExpLessOne(shape * log) / shape : log);
    const Eight beyond = strength * Sqrt(penalty) / t, inside = Eight{} + lambda;
    return g <= delta ? inside : beyond;
  });
}

// ---------------------------------------------------------------------------------------------- orientation

void Tensor(float* j11, float* j12, float* j22, CellRow x, int64_t n) {
  ForRow(n, [&](auto one, int64_t i) {
    using V = decltype(one);
    const V d1 = First<V>(x, i), d2 = Second<V>(x, i);
    Store(d1 * d1, j11 + i);
    Store(d1 * d2, j12 + i);
    Store(d2 * d2, j22 + i);
  });
}

constexpr float kNoDirection = 1e-8f;

// The unit vector at half the angle of (difference, 2 mixed) has the direction of (length + difference, 2 mixed), or
// turned by symmetry where that sum would cancel. Tensors whose fourth powers a float does not hold are made smaller.
inline void DirectionBlock(float* u1, float* u2, const float* j11, const float* j12, const float* j22) {
  const Eight mixed = Load<Eight>(j12), difference = Load<Eight>(j11) - Load<Eight>(j22);
  const Eight sizeOfMixed = Abs(mixed), size = Abs(difference);
  const Eight scale = (sizeOfMixed > 1e8f) | (size > 1e8f) ? Eight{} + 0x1p-70f : Eight{} + 1;
  const Eight a = scale * size, b = 2 * (scale * sizeOfMixed), length = Sqrt(a * a + b * b), sum = length + a;
  const Eight norm = Sqrt(2 * length * sum), larger = sum / norm, smaller = b / norm;
  const auto none = (sizeOfMixed < kNoDirection) & (size < kNoDirection), right = difference >= 0;
  const Eight sine = right ? smaller : larger;
  Store(none ? Eight{} : (right ? larger : smaller), u1);
  Store(none ? Eight{} : (mixed < 0 ? -sine : sine), u2);
}

void Direction(float* u1, float* u2, const float* j11, const float* j12, const float* j22, int64_t n) {
  int64_t i = 0;
  for (; i + 8 <= n; i += 8) DirectionBlock(u1 + i, u2 + i, j11 + i, j12 + i, j22 + i);
  if (i == n) return;
  float block[5][8] = {};
  for (int64_t k = 0; i + k < n; ++k) {
    block[0][k] = j11[i + k];
    block[1][k] = j12[i + k];
    block[2][k] = j22[i + k];
  }
  DirectionBlock(block[3], block[4], block[0], block[1], block[2]);
  for (int64_t k = 0; i + k < n; ++k) {
    u1[i + k] = block[3][k];
    u2[i + k] = block[4][k];
  }
}

}  // namespace

}  // namespace norv::NORV_LEVEL
