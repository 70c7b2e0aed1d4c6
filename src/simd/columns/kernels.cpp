#include "simd/columns/kernels.h"

#include "simd/family.h"

namespace norv {

NORV_FAMILY(columns, Column);

}  // namespace norv
