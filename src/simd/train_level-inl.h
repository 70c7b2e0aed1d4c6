// The training kernels of the one level for which the including file is compiled; it names that level.
#include "simd/train_kernels.h"

namespace norv::NORV_TRAIN_LEVEL {
namespace {

#include "simd/train-inl.h"

}  // namespace

extern const TrainKernels trainKernels;
const TrainKernels trainKernels = {TrainColumns, TrainRows, TrainLayerDeltas};

}  // namespace norv::NORV_TRAIN_LEVEL
