#include "kit/scale/scale.h"

#include <utility>

#include "kit/failure.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/picture.h"
#include "kit/scale/interpolation.h"
#include "kit/scale/resize.h"
#include "raster/separable.h"

namespace norv {
void RequireRoom(const PictureShape& shape, int32_t factor) {
  constexpr int64_t kMost = INT32_MAX;
  if (shape.width * int64_t{factor} > kMost || shape.height * int64_t{factor} > kMost)
    Fail("the enlarged picture would be too large");
}

Picture ShrinkPicture(Picture picture, int32_t factor, int32_t shrinkOrder) {
  return AllRows(Shrunk(HeldPicture(std::move(picture)), factor, shrinkOrder, 1));
}

matrix ShrinkPlane(matrix plane, int32_t factor, int32_t shrinkOrder) {
  return ShrinkPicture(GreyPicture(std::move(plane)), factor, shrinkOrder).plane[0];
}

matrix InterpolatePlane(const matrix& plane, int32_t factor, Interpolation interpolation) {
  matrix large;
  ResampleSeparable(plane, large, InterpolationTable(interpolation, plane.m, factor),
                    InterpolationTable(interpolation, plane.n, factor));
  return large;
}

}  // namespace norv
