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
  return OfLevel(ActiveLevel(), restore_avx::kRestoreKernels, restore_avx2::kRestoreKernels,
                 restore_avx512::kRestoreKernels);
}

}  // namespace norv
