#include "driver/dot.h"

#include "simd/products/kernels.h"

namespace norv {

[[gnu::noinline]] float dot(const matrix& a, const matrix& b) { return ActiveProductKernels().dot(a.x, b.x, a.mn); }

}  // namespace norv
