// The kernels of bytes for one level.
#include "simd/bytes/colours-inl.h"

namespace norv::NORV_LEVEL {

extern const ByteKernels kTable;
const ByteKernels kTable = {.level = kCompiledLevel, .fromColours = FromColours};

}  // namespace norv::NORV_LEVEL
