// What weights are made of, and the rules that make them of it.
#pragma once

#include "simd/math/exponential-inl.h"
#include "simd/restore/cells-inl.h"
#include "simd/rows-inl.h"

namespace norv::NORV_LEVEL {
namespace {

using Whole = Vec<int32_t, kUpToEight>;

void MeasureIsotropic(float* out, CellRow x, int64_t n) {
  ForRow(n, [&]<typename V>(int64_t i) {
    const V d1 = First<V>(x, i), d2 = Second<V>(x, i);
    Store(d1 * d1 + d2 * d2, out + i);
  });
}

void MeasureCross(float* out, CellRow x, DirectionRow u, int64_t n) {
  ForRow(n, [&]<typename V>(int64_t i) { Store(Cross<V>(x, u, i), out + i); });
}

void MeasureDot(float* out, CellRow x, DirectionRow u, int64_t n) {
  ForRow(n, [&]<typename V>(int64_t i) { Store(Dot<V>(x, u, i), out + i); });
}

void MeasureDifference(float* out, const float* a, const float* b, int64_t n) {
  ForRow(n, [&]<typename V>(int64_t i) { Store(Load<V>(a + i) - Load<V>(b + i), out + i); });
}

void SquareRoots(float* x, int64_t n) {
  ForRow(n, [&]<typename V>(int64_t i) { Store(Sqrt(Load<V>(x + i)), x + i); });
}

void Huber(float* x, float lambda, float delta, int64_t n) {
  ForRow(n, [&]<typename V>(int64_t i) {
    const V g = Abs(Load<V>(x + i));
    const V beyond = lambda * Sqrt((2 * g - delta) * delta) / g, inside = V{} + lambda;
    Store(g <= delta ? inside : beyond, x + i);
  });
}

// x = body(x) of up to eight values at a time, the last block filled up with ones.
template <typename Body>
inline void ForBlocks(float* x, int64_t n, const Body& body) {
  int64_t i = 0;
  for (; i + kUpToEight <= n; i += kUpToEight) Store(body(Load<UpToEight>(x + i)), x + i);
  StorePart(body(LoadPart(x + i, n - i, Fill<UpToEight>(1))), x + i, n - i);
}

void Lorentzian(float* x, double lambda, double sigma, bool squared, int64_t n) {
  EachInDoubles(x, x, n, [&](Doubles value) {
    const Doubles g2 = squared ? value : value * value;
    const Doubles beyond = lambda * Sqrt(NORV_LEVEL::Log(1 + g2 / (sigma * sigma)) / g2);
    return g2 > 1e-10 ? beyond : Fill<Doubles>(lambda / sigma);
  });
}

constexpr int32_t kRootHalf = 0x3f3504f3;

// ln |x| of normal floats: with 1 + f = |x| / 2^k near 1 and s = f / (2 + f), k ln 2 + 2 s (1 + s^2 / 3 + ...).
inline UpToEight LogOf(UpToEight x) {
  const Whole bits = (__builtin_bit_cast(Whole, x) & 0x7fffffff) - kRootHalf;
  const UpToEight k = Convert<float>(bits >> 23);
  const UpToEight f = __builtin_bit_cast(UpToEight, (bits & 0x007fffff) + kRootHalf) - 1;
  const UpToEight s = f / (2 + f), u = s * s;
  const UpToEight beyond = s * u * (0.6666667f + u * (0.4f + u * (0.2857143f + u * 0.2222222f)));
  return k * 0.693359375f + (2 * s + (beyond - k * 2.1219444e-4f));
}

// e^x - 1 without cancellation for x > -87; x beyond 87 counts as that.
inline UpToEight ExpLessOne(UpToEight x) {
  constexpr float kRound = 0x1.8p23f;
  const UpToEight bounded = x > 87 ? UpToEight{} + 87 : x;
  const UpToEight k = (bounded * 1.4426950f + kRound) - kRound;
  const UpToEight r = (bounded - k * 0.693359375f) + k * 2.1219444e-4f;
  const UpToEight tail =
      0.16666667f + r * (0.041666667f + r * (0.0083333333f + r * (1.3888889e-3f + r * 1.9841270e-4f)));
  const UpToEight scale = __builtin_bit_cast(UpToEight, (Convert<int32_t>(k) + 127) << 23);
  return scale * (r + r * r * (0.5f + r * tail)) + (scale - 1);
}

// g / delta to the power of the shape is the exponential of a product; a shape of 0 is the limit of small ones.
void Shaped(float* x, float lambda, float delta, float shape, int64_t n) {
  const float inverse = 1 / delta, strength = delta >= 0 ? lambda : __builtin_nanf("");
  ForBlocks(x, n, [&](UpToEight value) {
    const UpToEight g = Abs(value), t = g * inverse, log = LogOf(t);
    const UpToEight penalty = 1 + 2 * (shape > 0 ? ExpLessOne(shape * log) / shape : log);
    const UpToEight beyond = strength * Sqrt(penalty) / t, inside = UpToEight{} + lambda;
    return g <= delta ? inside : beyond;
  });
}

}  // namespace
}  // namespace norv::NORV_LEVEL
