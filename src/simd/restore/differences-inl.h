// Weighted differences: their sums of squares and their steps.
#pragma once

#include "simd/restore/cells-inl.h"

namespace norv::NORV_LEVEL {
namespace {

// s -= alpha q; returns the new s.
template <typename V>
inline V Advance(float* s, float alpha, V q) {
  const V advanced = Load<V>(s) - alpha * q;
  Store(advanced, s);
  return advanced;
}

void IsotropicSquares(double* sums, CellRow p, const float* w, int64_t n) {
  SumRow(sums, n, Ahead(w), [&]<typename V>(int64_t i) {
    const V q1 = Load<V>(w + i) * First<V>(p, i), q2 = Load<V>(w + i) * Second<V>(p, i);
    return q1 * q1 + q2 * q2;
  });
}

void IsotropicStep(CellRow p, const float* w, float alpha, float* s1, float* s2, CornerRow out, int64_t n) {
  ForRow(n, Ahead(w, s1, s2), [&]<typename V>(int64_t i) {
    const V weight = Load<V>(w + i);
    Store(weight * Advance(s1 + i, alpha, weight * First<V>(p, i)), out.first + i);
    Store(weight * Advance(s2 + i, alpha, weight * -Second<V>(p, i)), out.second + i);
  });
}

void CrossSquares(double* sums, CellRow p, DirectionRow u, const float* w, int64_t n) {
  SumRow(sums, n, Ahead(w, u.u1, u.u2), [&]<typename V>(int64_t i) {
    const V q = Load<V>(w + i) * Cross<V>(p, u, i);
    return q * q;
  });
}

void CrossStep(CellRow p, DirectionRow u, const float* w, float alpha, float* s, CornerRow out, int64_t n) {
  ForRow(n, Ahead(w, s, u.u1, u.u2), [&]<typename V>(int64_t i) {
    const V weight = Load<V>(w + i), a = weight * Advance(s + i, alpha, weight * Cross<V>(p, u, i));
    Store(a * Load<V>(u.u2 + i), out.first + i);
    Store(a * Load<V>(u.u1 + i), out.second + i);
  });
}

void ScaledCrossSquares(double* sums, CellRow p, DirectionRow u, int64_t n) {
  SumRow(sums, n, Ahead(u.u1, u.u2), [&]<typename V>(int64_t i) {
    const auto q = Cross<V>(p, u, i);
    return q * q;
  });
}

void ScaledCrossStep(CellRow p, DirectionRow u, float alpha, float* s, CornerRow out, int64_t n) {
  ForRow(n, Ahead(s, u.u1, u.u2), [&]<typename V>(int64_t i) {
    const V a = Advance(s + i, alpha, Cross<V>(p, u, i));
    Store(a * Load<V>(u.u2 + i), out.first + i);
    Store(a * Load<V>(u.u1 + i), out.second + i);
  });
}

void DirectionalSquares(double* sums, CellRow p, DirectionRow u, const float* w, const float* v, int64_t n) {
  SumRow(sums, n, Ahead(w, v, u.u1, u.u2), [&]<typename V>(int64_t i) {
    const V cross = Load<V>(w + i) * Cross<V>(p, u, i), dot = Load<V>(v + i) * Dot<V>(p, u, i);
    return cross * cross + dot * dot;
  });
}

void DirectionalStep(CellRow p, DirectionRow u, const float* w, const float* v, float alpha, float* s, float* t,
                     CornerRow out, int64_t n) {
  ForRow(n, Ahead(w, v, s, t, u.u1, u.u2), [&]<typename V>(int64_t i) {
    const V across = Load<V>(w + i), along = Load<V>(v + i), u1 = Load<V>(u.u1 + i), u2 = Load<V>(u.u2 + i);
    const V a = across * Advance(s + i, alpha, across * Cross<V>(p, u, i));
    const V b = along * Advance(t + i, alpha, along * Dot<V>(p, u, i));
    Store(a * u2 + b * u1, out.first + i);
    Store(a * u1 - b * u2, out.second + i);
  });
}

void DifferenceStep(const float* a, const float* b, const float* w, float alpha, float* s, float* out, int64_t n) {
  ForRow(n, Ahead(w, s), [&]<typename V>(int64_t i) {
    const V weight = Load<V>(w + i);
    Store(weight * Advance(s + i, alpha, weight * (Load<V>(a + i) - Load<V>(b + i))), out + i);
  });
}

}  // namespace
}  // namespace norv::NORV_LEVEL
