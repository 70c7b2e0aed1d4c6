// The machine's own limit at one vector level: separate multiplications and additions in registers, with nothing else.
// To be included by one file per level, which defines NORV_LEVEL and NORV_VECTOR_BYTES.

#include "peak.h"

namespace norv::NORV_LEVEL {

using PeakFloats = float __attribute__((vector_size(NORV_VECTOR_BYTES)));

// Chains of additions, enough to hide the latency on the processors that we know.
constexpr int kChains = 12;
const int64_t kPeakOperations = 2 * kChains * (NORV_VECTOR_BYTES / 4);

float PeakRounds(int64_t rounds) {
  PeakFloats sums[kChains] = {}, factor = PeakFloats{} + 0.5f, other = factor;
  for (int64_t i = 0; i < rounds; ++i) {
#pragma GCC unroll 16
    for (PeakFloats& sum : sums) {
      PeakFloats product;
      // Written out, as the compiler would form the product once: it is always the same.
#if NORV_VECTOR_BYTES == 64
      asm volatile("vmulps %1, %2, %0" : "=v"(product) : "v"(factor), "v"(other));
#elif defined(__aarch64__)
      asm volatile("fmul %0.4s, %1.4s, %2.4s" : "=w"(product) : "w"(factor), "w"(other));
#elif NORV_VECTOR_BYTES == 16
      asm volatile("mulps %2, %0" : "=x"(product) : "0"(factor), "x"(other));
#else
      asm volatile("vmulps %1, %2, %0" : "=x"(product) : "x"(factor), "x"(other));
#endif
      sum += product;
    }
  }
  PeakFloats all = {};
  for (const PeakFloats& sum : sums) all += sum;
  return all[0];
}

}  // namespace norv::NORV_LEVEL
