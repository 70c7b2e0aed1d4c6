// Enlargement by interpolation of an axis.
#pragma once

#include <cstdint>

#include "raster/separable.h"

namespace norv {

enum class Interpolation : int32_t { cubic, lanczos };

// Cubic convolution with a = -1/2.
double CubicKernel(double x);

// The table that enlarges an axis of `length` pixels `factor` times: Lanczos-3, or cubic convolution with a = -1/2
// (Keys 1981).
ResampleTable InterpolationTable(Interpolation interpolation, int32_t length, int32_t factor);

}  // namespace norv
