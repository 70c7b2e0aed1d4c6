// Rotations and reflections of padded columns.
#pragma once

#include "simd/columns/sums-inl.h"

namespace norv::NORV_LEVEL {
namespace {

inline double DotPadded(const double* a, const double* b, int32_t length) {
  EightSums sum;
  for (int32_t i = 0; i < length; i += 8) sum.Add(a + i, b + i);
  return sum.Total();
}

inline void Rotate(double* a, double* b, GivensRotation r, int32_t length) {
  for (int32_t i = 0; i < length; i += kDoubleLanes) {
    const Doubles x = Load<Doubles>(a + i), y = Load<Doubles>(b + i);
    Store(r.c * x + r.s * y, a + i);
    Store(r.c * y - r.s * x, b + i);
  }
}

// `vectors` vectors of rows at a time, so that the column passed on from rotation to rotation stays in registers.
template <int vectors>
inline void RotateRows(double* const* column, const GivensRotation* rotations, int32_t count, int32_t row) {
  Doubles carried[vectors];
  for (int v = 0; v < vectors; ++v) carried[v] = Load<Doubles>(column[0] + row + v * kDoubleLanes);
  for (int32_t k = 0; k < count; ++k) {
    const double c = rotations[k].c, s = rotations[k].s;
    for (int v = 0; v < vectors; ++v) {
      const Doubles next = Load<Doubles>(column[k + 1] + row + v * kDoubleLanes);
      Store(c * carried[v] + s * next, column[k] + row + v * kDoubleLanes);
      carried[v] = c * next - s * carried[v];
    }
  }
  for (int v = 0; v < vectors; ++v) Store(carried[v], column[count] + row + v * kDoubleLanes);
}

inline void RotateAll(double* const* column, const GivensRotation* rotations, int32_t count, int32_t length) {
  constexpr int kMost = 4;
  int32_t row = 0;
  for (; row + kMost * kDoubleLanes <= length; row += kMost * kDoubleLanes)
    RotateRows<kMost>(column, rotations, count, row);
  for (; row < length; row += 8) RotateRows<8 / kDoubleLanes>(column, rotations, count, row);
}

// Pointers to neighbouring columns, kept apart from what is stored through them.
template <int32_t width>
struct SomeColumns {
  double* x[width];

  explicit SomeColumns(double* const* column) {
    for (int32_t j = 0; j < width; ++j) x[j] = column[j];
  }
};

template <int32_t width>
inline void ReflectSome(const double* v, double scale, double* const* column, int32_t begin, int32_t length) {
  const SomeColumns<width> some(column);
  EightSums sum[width];
  for (int32_t i = begin; i < length; i += 8)
    for (int32_t j = 0; j < width; ++j) sum[j].Add(v + i, some.x[j] + i);
  double factor[width];
  for (int32_t j = 0; j < width; ++j) factor[j] = scale * sum[j].Total();
  for (int32_t i = begin; i < length; i += kDoubleLanes)
    for (int32_t j = 0; j < width; ++j)
      Store(Load<Doubles>(some.x[j] + i) - factor[j] * Load<Doubles>(v + i), some.x[j] + i);
}

inline void Reflect(const double* v, double scale, double* const* column, int32_t columns, int32_t begin,
                    int32_t length) {
  int32_t j = 0;
  for (; j + 4 <= columns; j += 4) ReflectSome<4>(v, scale, column + j, begin, length);
  for (; j < columns; ++j) ReflectSome<1>(v, scale, column + j, begin, length);
}

template <int32_t width>
inline void ChangeSome(double* const* column, int32_t j, RankTwoChange change, const double* next, double* product,
                       int32_t begin, int32_t length) {
  const SomeColumns<width> some(column + j);
  double v[width], w[width];
  for (int32_t k = 0; k < width; ++k) v[k] = change.v[j + k], w[k] = change.w[j + k];
  EightSums sum[width];
  for (int32_t i = begin; i < length; i += 8)
    for (int32_t k = 0; k < width; ++k) {
      for (int32_t l = i; l < i + 8; l += kDoubleLanes)
        Store(Load<Doubles>(some.x[k] + l) - (Load<Doubles>(change.v + l) * w[k] + Load<Doubles>(change.w + l) * v[k]),
              some.x[k] + l);
      sum[k].Add(some.x[k] + i, next + i);
    }
  for (int32_t k = 0; k < width; ++k) product[j + k] = sum[k].Total();
}

inline void ChangeAndMultiply(double* const* column, int32_t first, int32_t end, RankTwoChange change,
                              const double* next, double* product, int32_t begin, int32_t length) {
  int32_t j = first;
  for (; j + 4 <= end; j += 4) ChangeSome<4>(column, j, change, next, product, begin, length);
  for (; j < end; ++j) ChangeSome<1>(column, j, change, next, product, begin, length);
}

}  // namespace
}  // namespace norv::NORV_LEVEL
