// Mode 8: how fast this machine computes a short single-precision dot product, on one thread and on eight.
#pragma once

#include <cstdint>

#include "linear/matrix2.h"
#include "simd/products/kernels.h"

namespace norv {

inline constexpr int32_t kBenchmarkLength = 144;
inline constexpr uint32_t kBenchmarkIterations = 1000000000;
inline constexpr int kBenchmarkThreads = 8;

// The next elements of the pseudo-random sequence, in (0, 1): (r2 * 10000 + r1) * 1e-8 + 5e-9 for two numbers each.
void FillAtRandom(matrix& vector);

// Computes the dot product of a's elements with b's (simd/products) exactly `iterations` times, split evenly over a
// team of exactly `threads` threads that all store into the one result. No compiler can shorten it: the kernel is
// compiled apart and called through a pointer. Progress goes to standard error when that is a terminal.
float RepeatDot(const matrix& a, const matrix& b, uint32_t iterations, int threads,
                decltype(ProductKernels::dot) dot = ActiveProductKernels().dot);

}  // namespace norv
