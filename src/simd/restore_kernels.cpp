#include "simd/restore_kernels.h"

#include "simd/level.h"

namespace norv {

namespace avx {
extern const RestoreKernels kRestoreKernels;
}
namespace avx2 {
extern const RestoreKernels kRestoreKernels;
}
namespace avx512 {
extern const RestoreKernels kRestoreKernels;
}

const RestoreKernels& ActiveRestoreKernels() {
  switch (ActiveLevel()) {
    case VectorLevel::avx:
      return avx::kRestoreKernels;
    case VectorLevel::avx2:
      return avx2::kRestoreKernels;
    case VectorLevel::avx512:
      return avx512::kRestoreKernels;
  }
  return avx::kRestoreKernels;
}

}  // namespace norv
