#include "driver/dot.h"

namespace norv {
namespace {

typedef float Eight __attribute__((vector_size(32)));
typedef float EightAnywhere __attribute__((vector_size(32), aligned(4), may_alias));

}  // namespace

// One accumulator on purpose: its chain of additions is what is measured, and more of them would change the last bits.
[[gnu::noinline]] float dot(const matrix& a, const matrix& b) {
  const int32_t count = a.mn, blocks = count / 8 * 8;
  const float *x = a.x, *y = b.x;
  Eight sum = {};
  for (int32_t k = 0; k < blocks; k += 8)
    sum += *reinterpret_cast<const EightAnywhere*>(y + k) * *reinterpret_cast<const Eight*>(x + k);
  float s = sum[0];
  for (int32_t k = blocks; k < count; ++k) s += x[k] * y[k];
  for (int lane = 1; lane < 8; ++lane) s += sum[lane];
  return s;
}

}  // namespace norv
