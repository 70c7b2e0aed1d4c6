#include "simd/train/kernels.h"

#include "simd/family.h"

namespace norv {

NORV_FAMILY(train, Train);

}  // namespace norv
