// An image's planes while they are denoised: on the display scale or as luminance and chrominance, without damage.
#pragma once

#include <vector>

#include "denoise/group_filter.h"
#include "image/float_image.h"

namespace norv {

// Converts the image on construction and back to its format in Finish().
class WorkingPlanes {
 public:
  // The format is a known one (asserted).
  WorkingPlanes(FloatImage& image, bool luminance, int threads);

  // The three planes with their noise: `sigma` in grey levels of the display becomes each plane's own; estimated per
  // plane when sigma is not positive. A plane of one value has none.
  std::vector<NoisyPlane> Planes(double sigma);
  void Finish();

 private:
  FloatImage& image_;
  int32_t format_;
  int threads_;
  matrix fourth_;
};

}  // namespace norv
