#include "simd/restore_kernels.h"

#include "simd/level.h"

namespace norv {

namespace restore_avx {
extern const RestoreKernels kRestoreKernels;
}
namespace restore_avx2 {
extern const RestoreKernels kRestoreKernels;
}
namespace restore_avx512 {
extern const RestoreKernels kRestoreKernels;
}

const RestoreKernels& ActiveRestoreKernels() {
  switch (ActiveLevel()) {
    case VectorLevel::avx:
      return restore_avx::kRestoreKernels;
    case VectorLevel::avx2:
      return restore_avx2::kRestoreKernels;
    case VectorLevel::avx512:
      return restore_avx512::kRestoreKernels;
  }
  return restore_avx::kRestoreKernels;
}

}  // namespace norv
