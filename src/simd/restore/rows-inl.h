// Rows added to rows, and their sums of squares.
#pragma once

#include "simd/restore/kernels.h"
#include "simd/restore/loops-inl.h"

namespace norv::NORV_LEVEL {
namespace {

void ScaleAndAdd(float* y, float s, const float* x, int64_t n) {
  ForRow(n, Ahead(y, x), [&]<typename V>(int64_t i) { Store(s * Load<V>(y + i) + Load<V>(x + i), y + i); });
}

void AddScaled(float* y, float s, const float* x, int64_t n) {
  ForRow(n, Ahead(y, x), [&]<typename V>(int64_t i) { Store(Load<V>(y + i) + s * Load<V>(x + i), y + i); });
}

void AddDifferences(float* y, const float* a, const float* b, const float* c, const float* d, int64_t n) {
  ForRow(n, [&]<typename V>(int64_t i) {
    Store(Load<V>(y + i) + ((Load<V>(a + i) - Load<V>(b + i)) + (Load<V>(c + i) - Load<V>(d + i))), y + i);
  });
}

void AddSquares(double* sums, const float* x, int64_t n) {
  SumRow(sums, n, [&]<typename V>(int64_t i) {
    const auto v = Load<V>(x + i);
    return v * v;
  });
}

void AddDifferenceSquares(double* sums, const float* a, const float* b, const float* w, int64_t n) {
  SumRow(sums, n, Ahead(w), [&]<typename V>(int64_t i) {
    const V q = Load<V>(w + i) * (Load<V>(a + i) - Load<V>(b + i));
    return q * q;
  });
}

}  // namespace
}  // namespace norv::NORV_LEVEL
