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

// Random display colours in the format, with a fourth plane of their own where it is set aside.
inline FloatImage RandomColours(int32_t w, int32_t h, int32_t format, float least, float most) {
  FloatImage image(w, h, kDefaultFormat);
  for (unsigned p = 0; p < 3; ++p) image.plane[p] = RandomPlane(w, h, 20 + p, least, most);
  image.ConvertTo(format);
  if (ModelOf(format) == kWithFourth) image.plane[3] = RandomPlane(w, h, 30);
  return image;
}

}  // namespace norv::test
