#include "simd/train_kernels.h"

#include "simd/level.h"

namespace norv {
namespace avx {
extern const TrainKernels trainKernels;
}
namespace avx2 {
extern const TrainKernels trainKernels;
}
namespace avx512 {
extern const TrainKernels trainKernels;
}

const TrainKernels& ActiveTrainKernels() {
  switch (ActiveLevel()) {
    case VectorLevel::avx512:
      return avx512::trainKernels;
    case VectorLevel::avx2:
      return avx2::trainKernels;
    case VectorLevel::avx:
      break;
  }
  return avx::trainKernels;
}

}  // namespace norv
