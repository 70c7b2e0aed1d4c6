#include "simd/resample/kernels.h"

#include "simd/family.h"

namespace norv {

NORV_FAMILY(resample, Resample);

}  // namespace norv
