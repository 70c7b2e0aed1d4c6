// The kernels of products for one level.
#include "simd/products/products-inl.h"

namespace norv::NORV_LEVEL {

extern const ProductKernels kTable;
const ProductKernels kTable = {
    .level = kCompiledLevel,
    .dot = Dot,
    .multiply = Multiply,
};

}  // namespace norv::NORV_LEVEL
