#include "simd/bytes/kernels.h"

#include "simd/family.h"

namespace norv {

NORV_FAMILY(bytes, Byte);

}  // namespace norv
