#include "kit/scale/scale.h"

#include "kit/failure.h"
#include "kit/pictures/picture.h"
#include "kit/scale/interpolation.h"
#include "kit/scale/premultiplied.h"
#include "raster/filters.h"
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

matrix TopLeft(const matrix& plane, int32_t width, int32_t height) {
  matrix part(width, height);
  for (int32_t r = 0; r < height; ++r)
    for (int32_t x = 0; x < width; ++x) part.z[r][x] = plane.z[r][x];
  return part;
}

}  // namespace

void RequireRoom(const PictureShape& shape, int32_t factor) {
  constexpr int64_t kMost = INT32_MAX;
  if (shape.width * int64_t{factor} > kMost || shape.height * int64_t{factor} > kMost)
    Fail("the enlarged picture would be too large");
}

Picture ShrinkPicture(const Picture& picture, int32_t factor, int32_t shrinkOrder) {
  const int32_t width = picture.Width() / factor, height = picture.Height() / factor;
  if (width == 0 || height == 0) Fail("the picture is smaller than the factor");
  matrix kernel;
  ShrinkKernel(kernel, factor, shrinkOrder);
  if (kernel.mn == 0) Fail("there is no filter of order %d", shrinkOrder);
  return PerPlaneMultiplied(picture, [&](const matrix& plane, matrix& small) {
    small.dim(width, height);
    ShrinkMatrix(small, TopLeft(plane, width * factor, height * factor), kernel);
  });
}

Picture InterpolatePicture(const Picture& picture, int32_t factor, Interpolation interpolation) {
  RequireRoom(picture.Shape(), factor);
  const ResampleTable horizontal = InterpolationTable(interpolation, picture.Width(), factor);
  const ResampleTable vertical = InterpolationTable(interpolation, picture.Height(), factor);
  return PerPlaneMultiplied(
      picture, [&](const matrix& plane, matrix& large) { ResampleSeparable(plane, large, horizontal, vertical); });
}

}  // namespace norv
