#include "simd/products/kernels.h"

#include "simd/family.h"

namespace norv {

NORV_FAMILY(products, Product);

}  // namespace norv
