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
  switch (ActiveLevel()) {
    case VectorLevel::avx512:
      return train_avx512::kTrainKernels;
    case VectorLevel::avx2:
      return train_avx2::kTrainKernels;
    case VectorLevel::avx:
      break;
  }
  return train_avx::kTrainKernels;
}

}  // namespace norv
