// The training kernels of one level. A level's file defines NORV_LEVEL and NORV_VECTOR_BYTES and includes this once;
// nothing with code in it is included outside that level's namespace.
#include <cstddef>
#include <cstdint>
#include <immintrin.h>

#include "simd/kernels.h"
#include "simd/train_kernels.h"

// clang-format off
#include "simd/vectors-inl.h"
#include "simd/math-inl.h"
#include "simd/activation-inl.h"
#include "simd/rows-inl.h"
#include "simd/logistic-inl.h"
#include "simd/train-inl.h"
// clang-format on

namespace norv::NORV_LEVEL {

extern const TrainKernels kTrainKernels;
const TrainKernels kTrainKernels = {TrainColumns, TrainRows, TrainLayerDeltas, ActivateTable<AllKinds>::kRows,
                                    ActivateLogistic};

}  // namespace norv::NORV_LEVEL
