// Images of reproducible random values.
#pragma once

#include "image/float_image.h"
#include "support/random_plane.h"

namespace norv::test {

inline FloatImage RandomFloatImage(int32_t w, int32_t h, int32_t format) {
  FloatImage image(w, h, format);
  for (int32_t p = 0; p < image.planes; ++p) image.plane[p] = RandomPlane(w, h, 10 * w + h + p);
  return image;
}

}  // namespace norv::test
