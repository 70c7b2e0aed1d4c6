// How strong the noise in a plane is.
#pragma once

#include "linear/matrix2.h"

namespace norv {

// The standard deviation of the noise in a plane, in its own units, from the median absolute diagonal difference of its
// 2 x 2 pixels (Donoho and Johnstone 1994, for wavelet coefficients); 0 for a plane without any. The values are
// numbers. The result does not depend on the number of threads.
double EstimateNoise(const matrix& plane, int threads);

}  // namespace norv
