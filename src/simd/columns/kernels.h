// Columns of doubles: products of any columns, and what decompositions do to padded ones.
//
// Padded columns start on a whole vector and have a multiple of kColumnBlock elements, those behind the matrix's rows
// zero; `length` counts them all. Every sum has one order at all levels:
//   eight sums   sum k of the products 8j + k, from 0; then ((0 + 4) + (2 + 6)) + ((1 + 5) + (3 + 7))
#pragma once

#include <cstdint>

namespace norv {

enum class VectorLevel;

inline constexpr int32_t kColumnBlock = 8;

// A pair (x, y) becomes (c x + s y, c y - s x).
struct GivensRotation {
  double c, s;
};

// A pending change of columns: column j loses v w[j] + w v[j].
struct RankTwoChange {
  const double* v;
  const double* w;
};

struct ColumnKernels {
  VectorLevel level;

  // Any number of rows, any alignment.
  // result[j][i] = the sum over k < inner of a[k][i] b[j][k], k in order from 0; result is none of the factors.
  void (*multiply)(const double* const* a, int32_t inner, const double* const* b, double* const* result, int32_t rows,
                   int32_t columns);
  // The same with b[k][j].
  void (*multiplyTransposed)(const double* const* a, int32_t inner, const double* const* b, double* const* result,
                             int32_t rows, int32_t columns);
  // sums[j] = <a, b[j]>: eight sums of whole blocks, then the tail one by one.
  void (*dots)(const double* a, const double* const* b, int32_t rows, int32_t columns, double* sums);
  // column[i] += a[k][j] a[k][i] for k < count, k in order, of rows a[k] of `length` elements, one behind the other.
  void (*addProducts)(const double* a, int64_t count, int32_t length, int32_t j, double* column);

  // Padded columns.
  // <a, b>: eight sums.
  double (*dot)(const double* a, const double* b, int32_t length);
  void (*rotate)(double* a, double* b, GivensRotation rotation, int32_t length);
  // Rotation k on columns k and k + 1, in the order of k < count.
  void (*rotateAll)(double* const* column, const GivensRotation* rotations, int32_t count, int32_t length);
  // Columns less v (scale <v, column>), by the elements begin .. length - 1; begin is a multiple of the block.
  void (*reflect)(const double* v, double scale, double* const* column, int32_t columns, int32_t begin, int32_t length);
  // Columns first .. end - 1 changed, and their products with `next` in eight sums, by the elements as above.
  void (*changeAndMultiply)(double* const* column, int32_t first, int32_t end, RankTwoChange change, const double* next,
                            double* product, int32_t begin, int32_t length);
};

// The table of a level at or below the machine's, and that of the level in use.
const ColumnKernels& ColumnKernelsOf(VectorLevel level);
const ColumnKernels& ActiveColumnKernels();

}  // namespace norv
