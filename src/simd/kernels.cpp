#include "simd/kernels.h"

#include "simd/level.h"

namespace norv {

namespace avx {
extern const Kernels kKernels;
}
namespace avx2 {
extern const Kernels kKernels;
}
namespace avx512 {
extern const Kernels kKernels;
}

const Kernels& KernelsOf(VectorLevel level) { return OfLevel(level, avx::kKernels, avx2::kKernels, avx512::kKernels); }

const Kernels& ActiveKernels() { return KernelsOf(ActiveLevel()); }

}  // namespace norv
