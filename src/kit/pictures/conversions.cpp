#include "kit/pictures/conversions.h"

#include <algorithm>

#include "kit/failure.h"
#include "kit/pictures/picture.h"
#include "restore/bit_process.h"

namespace norv {
namespace {

constexpr int32_t kAlphaFormat = kWithFourth | 7;

}  // namespace

// The bytes of a pixel stand from the third value to the first.
Picture ToPicture(const BitImage& image) {
  Picture picture(image.width, image.height, 3);
  for (int32_t r = 0; r < image.height; ++r)
    for (int32_t x = 0; x < image.width; ++x)
      for (int k = 0; k < 3; ++k) picture.plane[k].z[r][x] = image.rows[r][3 * x + 2 - k];
  return picture;
}

BitImage ToBitImage(const FloatImage& image) {
  BitImage bytes(image.width, image.height);
  std::fill_n(bytes.pixels.get(), bytes.size, uint8_t{0});  // the padding
  PasteToBitImage(bytes, 0, 0, image, nullptr, 0, 0, 0, 0);
  return bytes;
}

int32_t FloatFormatOf(const PictureShape& shape) { return shape.HasAlpha() ? kAlphaFormat : kDefaultFormat; }

FloatImage ToFloatImage(Picture picture) {
  FloatImage image(0, 0, FloatFormatOf(picture.Shape()));
  if (picture.HasAlpha()) image.plane[3].swap(picture.Alpha());
  if (picture.IsGrey())
    for (int k = 1; k < 3; ++k) picture.plane[k] = picture.plane[0];
  for (int k = 0; k < 3; ++k) image.plane[k].swap(picture.plane[k]);
  image.RefreshSize();
  return image;
}

Picture ToPicture(FloatImage image) {
  if (image.planes == 0) Fail("the image has the unknown format %d", image.format);
  Picture picture;
  picture.channels = ModelOf(image.format) == kWithFourth ? 4 : 3;
  if (picture.HasAlpha()) picture.Alpha().swap(image.plane[3]);
  if (!picture.HasAlpha()) image.ConvertTo(kDefaultFormat);
  for (int k = 0; k < 3; ++k) picture.plane[k].swap(image.plane[k]);
  return picture;
}

Picture GreyPicture(matrix plane, matrix alpha) {
  Picture picture;
  picture.channels = alpha.mn > 0 ? 2 : 1;
  picture.plane[0].swap(plane);
  picture.plane[1].swap(alpha);
  return picture;
}

Picture FirstColour(Picture picture) {
  return GreyPicture(std::move(picture.plane[0]), picture.HasAlpha() ? std::move(picture.Alpha()) : matrix());
}

void LayOnWhite(Picture& picture) {
  if (!picture.HasAlpha()) return;
  const float* alpha = picture.Alpha().x;
  for (int32_t k = 0; k < picture.Colours(); ++k) {
    float* colour = picture.plane[k].x;
    for (int32_t i = 0; i < picture.plane[k].mn; ++i)
      colour[i] = static_cast<float>(double{colour[i]} * alpha[i] / 255 + (255 - double{alpha[i]}));
  }
  --picture.channels;
}

}  // namespace norv
