#include "simd/patches/kernels.h"

#include "simd/family.h"

namespace norv {

NORV_FAMILY(patches, Patch);

}  // namespace norv
