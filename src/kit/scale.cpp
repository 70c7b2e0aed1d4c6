#include "kit/scale.h"

#include "kit/conversions.h"
#include "kit/failure.h"
#include "net/enlarge.h"
#include "net/layouts.h"
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
  for (int32_t k = 0; k < picture.channels; ++k) function(picture.plane[k], result.plane[k]);
  return result;
}

matrix TopLeft(const matrix& plane, int32_t width, int32_t height) {
  matrix part(width, height);
  for (int32_t r = 0; r < height; ++r)
    for (int32_t x = 0; x < width; ++x) part.z[r][x] = plane.z[r][x];
  return part;
}

// matrix throws for sizes beyond its own; products of sizes are checked here, where they would overflow before.
void RequireRoom(const Picture& picture, int32_t factor) {
  constexpr int64_t kMost = INT32_MAX;
  if (picture.Width() * int64_t{factor} > kMost || picture.Height() * int64_t{factor} > kMost)
    Fail("the enlarged picture would be too large");
}

}  // namespace

Picture ShrinkPicture(const Picture& picture, int32_t factor, int32_t shrinkOrder) {
  const int32_t width = picture.Width() / factor, height = picture.Height() / factor;
  if (width == 0 || height == 0) Fail("the picture is smaller than the factor");
  matrix kernel;
  ShrinkKernel(kernel, factor, shrinkOrder);
  if (kernel.mn == 0) Fail("there is no filter of order %d", shrinkOrder);
  return PerPlane(picture, [&](const matrix& plane, matrix& small) {
    small.dim(width, height);
    ShrinkMatrix(small, TopLeft(plane, width * factor, height * factor), kernel);
  });
}

Picture RepeatPixels(const Picture& picture, int32_t factor) {
  RequireRoom(picture, factor);
  return PerPlane(picture, [&](const matrix& plane, matrix& large) {
    large.dim(plane.m * factor, plane.n * factor);
    for (int32_t r = 0; r < large.n; ++r)
      for (int32_t x = 0; x < large.m; ++x) large.z[r][x] = plane.z[r / factor][x / factor];
  });
}

Picture InterpolatePicture(const Picture& picture, int32_t factor, Interpolation interpolation) {
  RequireRoom(picture, factor);
  const ResampleTable horizontal = InterpolationTable(interpolation, picture.Width(), factor);
  const ResampleTable vertical = InterpolationTable(interpolation, picture.Height(), factor);
  return PerPlane(picture,
                  [&](const matrix& plane, matrix& large) { ResampleSeparable(plane, large, horizontal, vertical); });
}

Picture EnlargeByNet(Picture picture, const NeuralNet& net, NetEnlargement how) {
  if (const char* reason = WhyNotEvaluable(net)) Fail("%s", reason);
  if (!FindEnlargement(net.N0, net.LastNi()))
    Fail("a network of %d inputs and %d outputs does not enlarge", net.N0, net.LastNi());
  RequireRoom(picture, net.LastNi() == 4 ? 2 : 4);
  if (picture.Height() / how.threads < how.threads) how.threads = 1;
  const int32_t bits = picture.bits;
  const bool grey = picture.IsGrey(), alpha = picture.HasAlpha();
  FloatImage image = ToFloatImage(std::move(picture));
  NetEnlargeImage(image, net, how.shortcut || grey, how.average, how.threads);
  Picture large = ToPicture(std::move(image));
  large.bits = bits;
  if (!grey) return large;
  Picture shown = GreyPicture(std::move(large.plane[0]));
  shown.bits = bits;
  if (alpha) {
    shown.channels = 2;
    shown.plane[1].swap(large.plane[3]);
  }
  return shown;
}

}  // namespace norv
