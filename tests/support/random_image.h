// Images of reproducible random values, and their files.
#pragma once

#include <string>

#include "image/float_image.h"
#include "support/random_plane.h"
#include "support/scratch.h"

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

// The image as it stands in a file.
inline std::string ImageBytes(const FloatImage& image) {
  const auto words = static_cast<int32_t>(image.mask.words.size());
  std::string bytes = Int32Bytes({image.width, image.height, image.format, words});
  for (const matrix& plane : image.plane) bytes += BytesOf(plane.x, plane.mn);
  return bytes + BytesOf(image.mask.words.data(), words);
}

}  // namespace norv::test
