// The kernels of training for one level.
#include "simd/train/activate-inl.h"
#include "simd/train/columns-inl.h"
#include "simd/train/deltas-inl.h"
#include "simd/train/rows-inl.h"

namespace norv::NORV_LEVEL {

extern const TrainKernels kTable;
const TrainKernels kTable = {
    .level = kCompiledLevel,
    .columns = TrainColumns,
    .rows = TrainRows,
    .deltas = TrainLayerDeltas,
    .activate = ActivateTable<AllKinds>::kRows,
    .activateLogistic = ActivateLogistic,
};

}  // namespace norv::NORV_LEVEL
