// The kernels of resampling for one level.
#include "simd/resample/phases-inl.h"
#include "simd/resample/rows-inl.h"

namespace norv::NORV_LEVEL {

extern const ResampleKernels kTable;
const ResampleKernels kTable = {
    .level = kCompiledLevel,
    .combineRows = CombineRows,
    .splitPhases = SplitPhases,
    .joinPhases = JoinPhases,
};

}  // namespace norv::NORV_LEVEL
