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

const Kernels& KernelsOf(VectorLevel level) {
  switch (level) {
    case VectorLevel::avx512:
      return avx512::kKernels;
    case VectorLevel::avx2:
      return avx2::kKernels;
    default:
      return avx::kKernels;
  }
}

const Kernels& ActiveKernels() { return KernelsOf(ActiveLevel()); }

}  // namespace norv
