// The kernels of columns for one level.
#include "simd/columns/orthogonal-inl.h"
#include "simd/columns/products-inl.h"

namespace norv::NORV_LEVEL {

extern const ColumnKernels kTable;
const ColumnKernels kTable = {
    .level = kCompiledLevel,
    .multiply = Multiply,
    .multiplyTransposed = MultiplyTransposed,
    .dots = Dots,
    .addProducts = AddProducts,
    .dot = DotPadded,
    .rotate = Rotate,
    .rotateAll = RotateAll,
    .reflect = Reflect,
    .changeAndMultiply = ChangeAndMultiply,
};

}  // namespace norv::NORV_LEVEL
