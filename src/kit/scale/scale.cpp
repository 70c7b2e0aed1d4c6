#include "kit/scale/scale.h"

#include <utility>

#include "kit/failure.h"
#include "kit/pictures/picture.h"
#include "kit/scale/interpolation.h"
#include "kit/scale/premultiplied.h"
#include "kit/scale/resize.h"
#include "raster/separable.h"

namespace norv {
namespace {

// The same thing done to every plane.
template <typename PlaneFunction>
Picture PerPlane(const Picture& picture, const PlaneFunction& function) {
  Picture result;
  result.channels = picture.channels;
  result.bits = picture.bits;
  result.metadata = picture.metadata;
  for (int32_t k = 0; k < picture.channels; ++k) function(picture.plane[k], result.plane[k]);
  return result;
}

// The same with the colours multiplied by alpha meanwhile.
template <typename PlaneFunction>
Picture PerPlaneMultiplied(const Picture& picture, const PlaneFunction& function) {
  if (!picture.HasAlpha()) return PerPlane(picture, function);
  Picture multiplied = picture;
  Premultiply(multiplied);
  Picture result = PerPlane(multiplied, function);
  Unpremultiply(result);
  return result;
}

}  // namespace

void RequireRoom(const PictureShape& shape, int32_t factor) {
  constexpr int64_t kMost = INT32_MAX;
  if (shape.width * int64_t{factor} > kMost || shape.height * int64_t{factor} > kMost)
    Fail("the enlarged picture would be too large");
}

Picture ShrinkPicture(Picture picture, int32_t factor, int32_t shrinkOrder) {
  return AllRows(Shrunk(HeldPicture(std::move(picture)), factor, shrinkOrder, 1));
}

Picture InterpolatePicture(const Picture& picture, int32_t factor, Interpolation interpolation) {
  RequireRoom(picture.Shape(), factor);
  const ResampleTable horizontal = InterpolationTable(interpolation, picture.Width(), factor);
  const ResampleTable vertical = InterpolationTable(interpolation, picture.Height(), factor);
  return PerPlaneMultiplied(
      picture, [&](const matrix& plane, matrix& large) { ResampleSeparable(plane, large, horizontal, vertical); });
}

}  // namespace norv
