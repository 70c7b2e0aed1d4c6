// Products of column-major double matrices of any size, several columns at once. Every sum has one order, which depends
// on the sizes only.
#pragma once

#include <cstdint>
#include <cstring>

namespace norv {

using Four [[gnu::vector_size(32)]] = double;

// Four doubles at any address.
inline Four LoadFour(const double* x) {
  Four four;
  std::memcpy(&four, x, sizeof four);
  return four;
}
inline void StoreFour(double* x, Four four) { std::memcpy(x, &four, sizeof four); }

template <int32_t width, typename Coefficient>
void CombineColumns(const double* const* a, int32_t inner, double* const* result, int32_t rows, int32_t j,
                    const Coefficient& coefficient) {
  int32_t i = 0;
  for (; i + 8 <= rows; i += 8) {
    Four low[width] = {}, high[width] = {};
    for (int32_t k = 0; k < inner; ++k)
      for (int32_t l = 0; l < width; ++l) {
        const double factor = coefficient(k, j + l);
        low[l] += factor * LoadFour(a[k] + i);
        high[l] += factor * LoadFour(a[k] + i + 4);
      }
    for (int32_t l = 0; l < width; ++l) {
      StoreFour(result[j + l] + i, low[l]);
      StoreFour(result[j + l] + i + 4, high[l]);
    }
  }
  for (; i < rows; ++i)
    for (int32_t l = 0; l < width; ++l) {
      double sum = 0;
      for (int32_t k = 0; k < inner; ++k) sum += coefficient(k, j + l) * a[k][i];
      result[j + l][i] = sum;
    }
}

// result[j][i] = sum over k < inner of a[k][i] coefficient(k, j), in the order of k; result is none of the factors.
template <typename Coefficient>
void CombineAll(const double* const* a, int32_t inner, double* const* result, int32_t rows, int32_t columns,
                const Coefficient& coefficient) {
  int32_t j = 0;
  for (; j + 4 <= columns; j += 4) CombineColumns<4>(a, inner, result, rows, j, coefficient);
  for (; j < columns; ++j) CombineColumns<1>(a, inner, result, rows, j, coefficient);
}

// sum[l] = <a, b[l]> over `rows` elements: eight partial sums, then the tail.
template <int32_t width>
void DotColumns(const double* a, const double* const* b, int32_t rows, double* sum) {
  Four even[width] = {}, odd[width] = {};
  int32_t i = 0;
  for (; i + 8 <= rows; i += 8)
    for (int32_t l = 0; l < width; ++l) {
      even[l] += LoadFour(a + i) * LoadFour(b[l] + i);
      odd[l] += LoadFour(a + i + 4) * LoadFour(b[l] + i + 4);
    }
  for (int32_t l = 0; l < width; ++l) {
    const Four both = even[l] + odd[l];
    sum[l] = (both[0] + both[2]) + (both[1] + both[3]);
    for (int32_t k = i; k < rows; ++k) sum[l] += a[k] * b[l][k];
  }
}

}  // namespace norv
