// Products of single-precision vectors and matrices.
#pragma once

#include <cstdint>

namespace norv {

enum class VectorLevel;

// A product's columns, and the rows behind the last one wanted, are padded to these.
inline constexpr int32_t kProductColumns = 16;
inline constexpr int32_t kProductRows = 8;

// The left factor of a product: element (i, k) is at x[i * row + k * inner].
struct LeftFactor {
  const float* x;
  int64_t row, inner;
};

struct ProductKernels {
  VectorLevel level;

  // Sum of x[i] y[i] for any length and alignment: eight partial sums, sum k of the products 8j + k of whole blocks of
  // eight, products of the tail added one by one to sum 0, then sums 1 to 7 added to it in that order. One chain of
  // additions on purpose: its speed is what the processor benchmark measures.
  float (*dot)(const float* x, const float* y, int64_t n);

  // out[i][j] = the sum over k < inner, in order from 0, of left(i, k) right[k][j], for i < rows rounded up to
  // kProductRows and j < columns, a multiple of kProductColumns. Rows of right and out are `stride` floats apart.
  void (*multiply)(LeftFactor left, const float* right, int32_t inner, float* out, int64_t stride, int32_t rows,
                   int32_t columns);
};

// The table of a level at or below the machine's, and that of the level in use.
const ProductKernels& ProductKernelsOf(VectorLevel level);
const ProductKernels& ActiveProductKernels();

}  // namespace norv
