#include "kit/pictures/luminance.h"

#include <utility>

#include "image/float_image.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"

namespace norv {

matrix LuminanceOf(const Picture& picture, StandingTeam& team) {
  if (picture.IsGrey()) return picture.plane[0];
  matrix luminance(picture.Width(), picture.Height());
  const PixelFunction toLuminance = FindModel(kLuminance)->toModel;
  team.ForParts(luminance.mn, kPixelsWorthACut, [&](int64_t begin, int64_t end) {
    for (int64_t i = begin; i < end; ++i) {
      const float display[3] = {picture.plane[0].x[i], picture.plane[1].x[i], picture.plane[2].x[i]};
      float model[3];
      luminance.x[i] = toLuminance(model, display)[0];
    }
  });
  return luminance;
}

matrix LuminanceOf(const Picture& picture) { return LuminanceOf(picture, StandingTeam::Alone()); }

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
