// The dot product and the product of matrices.
#pragma once

#include "simd/products/kernels.h"
#include "simd/vector-inl.h"

namespace norv::NORV_LEVEL {
namespace {

// Eight sums at every level: they belong to the result. Aligned, so that the loop lies in one line of the instruction
// cache whatever is linked before it: the end of a line within it costs a third of the speed.
[[gnu::aligned(64)]] inline float Dot(const float* x, const float* y, int64_t n) {
  const int64_t blocks = n & ~int64_t{7};
  UpToEight sums[8 / kUpToEight] = {};
  for (int64_t i = 0; i < blocks; i += 8)
    for (int part = 0; part < 8; part += kUpToEight)
      sums[part / kUpToEight] += Load<UpToEight>(y + i + part) * Load<UpToEight>(x + i + part);
  float sum = sums[0][0];
  for (int64_t i = blocks; i < n; ++i) sum += x[i] * y[i];
  for (int lane = 1; lane < 8; ++lane) sum += sums[lane / kUpToEight][lane % kUpToEight];
  return sum;
}

// A tile of the product stays in registers: kAcross vectors in each of kDown rows.
inline constexpr int kAcross = kProductColumns / kFloatLanes;
inline constexpr int kDown = kProductRows / kAcross;

inline void MultiplyTile(const LeftFactor& left, const float* right, int32_t inner, float* out, int64_t stride) {
  Floats sum[kDown][kAcross] = {};
  for (int32_t k = 0; k < inner; ++k)
    for (int x = 0; x < kAcross; ++x) {
      const Floats value = Load<Floats>(right + k * stride + x * kFloatLanes);
      for (int i = 0; i < kDown; ++i) sum[i][x] += left.x[i * left.row + k * left.inner] * value;
    }
  for (int i = 0; i < kDown; ++i)
    for (int x = 0; x < kAcross; ++x) Store(sum[i][x], out + i * stride + x * kFloatLanes);
}

inline void Multiply(LeftFactor left, const float* right, int32_t inner, float* out, int64_t stride, int32_t rows,
                     int32_t columns) {
  for (int32_t j = 0; j < columns; j += kProductColumns)
    for (int64_t i = 0; i < rows; i += kDown)
      MultiplyTile({left.x + i * left.row, left.row, left.inner}, right + j, inner, out + i * stride + j, stride);
}

}  // namespace
}  // namespace norv::NORV_LEVEL
