#include "kit/scale/interpolation.h"

#include <cmath>

namespace norv {

double CubicKernel(double x) {
  const double t = std::abs(x);
  if (t < 1) return (1.5 * t - 2.5) * t * t + 1;
  return t < 2 ? ((-0.5 * t + 2.5) * t - 4) * t + 2 : 0;
}

ResampleTable InterpolationTable(Interpolation interpolation, int32_t length, int32_t factor) {
  if (interpolation == Interpolation::lanczos) return EnlargementTable(length, factor);
  ResampleTable table;
  table.taps = 6;
  for (int32_t k = 0; k < length * factor; ++k) {
    const double position = (k + 0.5) / factor - 0.5, first = std::floor(position) - 2;
    table.start.push_back(static_cast<int32_t>(first));
    for (int32_t j = 0; j < table.taps; ++j)
      table.weights.push_back(static_cast<float>(CubicKernel(first + j - position)));
  }
  return table;
}

}  // namespace norv
