// The kernels of network evaluation for one level.
#include "simd/activation/logistic-inl.h"
#include "simd/activation/rows-inl.h"
#include "simd/evaluate/layer-inl.h"

namespace norv::NORV_LEVEL {

extern const EvaluateKernels kTable;
const EvaluateKernels kTable = {
    .level = kCompiledLevel,
    .evaluateLayer = EvaluateLayer,
    .activation = RowTable<AllKinds>::kRows,
};

}  // namespace norv::NORV_LEVEL
