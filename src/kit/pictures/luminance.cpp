#include "kit/pictures/luminance.h"

#include <utility>

#include "image/float_image.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"

namespace norv {

matrix LuminanceOf(const Picture& picture) {
  if (picture.IsGrey()) return picture.plane[0];
  matrix luminance(picture.Width(), picture.Height());
  const PixelFunction toLuminance = FindModel(kLuminance)->toModel;
  for (int32_t i = 0; i < luminance.mn; ++i) {
    const float display[3] = {picture.plane[0].x[i], picture.plane[1].x[i], picture.plane[2].x[i]};
    float model[3];
    luminance.x[i] = toLuminance(model, display)[0];
  }
  return luminance;
}

matrix LuminanceOf(const PictureSource& picture) { return LuminanceOf(AllRows(picture)); }

SeenLuminance OpaqueLuminance(Picture picture) {
  LayOnWhite(picture);
  return {LuminanceOf(picture), picture.bits, picture.IsGrey()};
}

matrix LoadLuminance(const std::string& path, const ReadChoice& choice) { return LuminanceOf(LoadImage(path, choice)); }

SeenLuminance LoadOpaqueLuminance(const std::string& path, const ReadChoice& choice) {
  return OpaqueLuminance(LoadImage(path, choice));
}

}  // namespace norv
