// The kernels of patches for one level.
#include "simd/patches/distances-inl.h"
#include "simd/patches/shrink-inl.h"
#include "simd/patches/transform-inl.h"

namespace norv::NORV_LEVEL {

extern const PatchKernels kTable;
const PatchKernels kTable = {
    .level = kCompiledLevel,
    .analyse = Analyse,
    .threshold = Threshold,
    .shrink = Shrink,
    .synthesise = Synthesise,
    .distances = Distances,
};

}  // namespace norv::NORV_LEVEL
