// How strong the noise in a plane is.
#pragma once

#include "linear/matrix2.h"

namespace norv {

// The standard deviation of the noise in a plane, in its own units; 0 for a plane without 2 x 2 pixels.
double EstimateNoise(const matrix& plane);

}  // namespace norv
