#include "simd/colours/kernels.h"

#include "simd/family.h"

namespace norv {

NORV_FAMILY(colours, Colour);

}  // namespace norv
