// Products of columns of any length, several at once so that the common factor is read once for all of them.
#pragma once

#include "simd/columns/sums-inl.h"

namespace norv::NORV_LEVEL {
namespace {

// Columns j .. j + width - 1 of the result, from row i on, one vector V of rows in `parts`; coefficient(k, column).
template <typename V, int parts, int32_t width, typename Coefficient>
inline void CombineRows(const double* const* a, int32_t inner, double* const* result, int32_t i, int32_t j,
                        const Coefficient& coefficient) {
  V sum[width][parts] = {};
  for (int32_t k = 0; k < inner; ++k)
    for (int32_t l = 0; l < width; ++l) {
      const double factor = coefficient(k, j + l);
      for (int p = 0; p < parts; ++p) sum[l][p] += factor * Load<V>(a[k] + i + p * kLanes<V>);
    }
  for (int32_t l = 0; l < width; ++l)
    for (int p = 0; p < parts; ++p) Store(sum[l][p], result[j + l] + i + p * kLanes<V>);
}

template <int32_t width, typename Coefficient>
inline void CombineColumns(const double* const* a, int32_t inner, double* const* result, int32_t rows, int32_t j,
                           const Coefficient& coefficient) {
  int32_t i = 0;
  for (; i + 8 <= rows; i += 8) CombineRows<Doubles, 8 / kDoubleLanes, width>(a, inner, result, i, j, coefficient);
  for (; i < rows; ++i) CombineRows<double, 1, width>(a, inner, result, i, j, coefficient);
}

template <typename Coefficient>
inline void CombineAll(const double* const* a, int32_t inner, double* const* result, int32_t rows, int32_t columns,
                       const Coefficient& coefficient) {
  int32_t j = 0;
  for (; j + 4 <= columns; j += 4) CombineColumns<4>(a, inner, result, rows, j, coefficient);
  for (; j < columns; ++j) CombineColumns<1>(a, inner, result, rows, j, coefficient);
}

inline void Multiply(const double* const* a, int32_t inner, const double* const* b, double* const* result, int32_t rows,
                     int32_t columns) {
  CombineAll(a, inner, result, rows, columns, [b](int32_t k, int32_t j) { return b[j][k]; });
}

inline void MultiplyTransposed(const double* const* a, int32_t inner, const double* const* b, double* const* result,
                               int32_t rows, int32_t columns) {
  CombineAll(a, inner, result, rows, columns, [b](int32_t k, int32_t j) { return b[k][j]; });
}

template <int32_t width>
inline void DotsOf(const double* a, const double* const* b, int32_t rows, double* sums) {
  EightSums sum[width];
  int32_t i = 0;
  for (; i + 8 <= rows; i += 8)
    for (int32_t l = 0; l < width; ++l) sum[l].Add(a + i, b[l] + i);
  for (int32_t l = 0; l < width; ++l) {
    sums[l] = sum[l].Total();
    for (int32_t k = i; k < rows; ++k) sums[l] += a[k] * b[l][k];
  }
}

inline void Dots(const double* a, const double* const* b, int32_t rows, int32_t columns, double* sums) {
  int32_t j = 0;
  for (; j + 4 <= columns; j += 4) DotsOf<4>(a, b + j, rows, sums + j);
  for (; j < columns; ++j) DotsOf<1>(a, b + j, rows, sums + j);
}

// The elements from i on, in `parts` vectors V that stay in registers while the rows pass.
template <typename V, int parts>
inline void AddProductsOf(const double* a, int64_t count, int32_t length, int32_t j, int32_t i, double* column) {
  V sum[parts];
  for (int p = 0; p < parts; ++p) sum[p] = Load<V>(column + i + p * kLanes<V>);
  for (int64_t k = 0; k < count; ++k, a += length)
    for (int p = 0; p < parts; ++p) sum[p] += a[j] * Load<V>(a + i + p * kLanes<V>);
  for (int p = 0; p < parts; ++p) Store(sum[p], column + i + p * kLanes<V>);
}

inline void AddProducts(const double* a, int64_t count, int32_t length, int32_t j, double* column) {
  constexpr int kMost = 8;
  int32_t i = 0;
  for (; i + kMost * kDoubleLanes <= length; i += kMost * kDoubleLanes)
    AddProductsOf<Doubles, kMost>(a, count, length, j, i, column);
  for (; i + kDoubleLanes <= length; i += kDoubleLanes) AddProductsOf<Doubles, 1>(a, count, length, j, i, column);
  for (; i < length; ++i) AddProductsOf<double, 1>(a, count, length, j, i, column);
}

}  // namespace
}  // namespace norv::NORV_LEVEL
