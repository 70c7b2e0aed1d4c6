#include "simd/evaluate/kernels.h"

#include "simd/family.h"

namespace norv {

NORV_FAMILY(evaluate, Evaluate);

}  // namespace norv
