#include "simd/restore/kernels.h"

#include "simd/family.h"

namespace norv {

NORV_FAMILY(restore, Restore);

}  // namespace norv
