#include "simd/train_kernels.h"

#include "simd/level.h"

namespace norv {
namespace train_avx {
extern const TrainKernels kTrainKernels;
}
namespace train_avx2 {
extern const TrainKernels kTrainKernels;
}
namespace train_avx512 {
extern const TrainKernels kTrainKernels;
}

const TrainKernels& ActiveTrainKernels() {
  return OfLevel(ActiveLevel(), train_avx::kTrainKernels, train_avx2::kTrainKernels, train_avx512::kTrainKernels);
}

}  // namespace norv
