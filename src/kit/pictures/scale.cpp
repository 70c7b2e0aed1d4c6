#include "kit/pictures/scale.h"

#include "kit/failure.h"
#include "kit/pictures/conversions.h"
#include "net/enlarge.h"
#include "net/layouts.h"
#include "raster/bands.h"
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
void RequireRoom(const PictureShape& shape, int32_t factor) {
  constexpr int64_t kMost = INT32_MAX;
  if (shape.width * int64_t{factor} > kMost || shape.height * int64_t{factor} > kMost)
    Fail("the enlarged picture would be too large");
}

// The network's factor for a picture of this size.
int32_t RequireEnlargement(const NeuralNet& net, const PictureShape& shape) {
  if (const char* reason = WhyNotEvaluable(net)) Fail("%s", reason);
  if (!FindEnlargement(net.N0, net.LastNi()))
    Fail("a network of %d inputs and %d outputs does not enlarge", net.N0, net.LastNi());
  const int32_t factor = net.LastNi() == 4 ? 2 : 4;
  RequireRoom(shape, factor);
  return factor;
}

// A grey picture with or without alpha from the three equal planes that it was enlarged as.
Picture ShownAs(const PictureShape& shape, Picture picture) {
  picture.bits = shape.bits;
  if (shape.channels > 2) return picture;
  Picture grey = GreyPicture(std::move(picture.plane[0]));
  grey.bits = shape.bits;
  if (shape.channels == 1) return grey;
  grey.channels = 2;
  grey.plane[1].swap(picture.plane[3]);
  return grey;
}

// A picture's rows as those of an image to be enlarged, and back.
class PictureRowSource : public RowSource {
 public:
  explicit PictureRowSource(PictureReader& picture) : picture_(picture) {
    width = picture.Shape().width;
    height = picture.Shape().height;
    format = FloatFormatOf(picture.Shape());
  }
  void Read(FloatImage& image, int32_t at, int32_t rows) override {
    Picture part(width, rows, picture_.Shape().channels);
    picture_.Read(part, 0, rows);
    PasteBand(image, at, ToFloatImage(std::move(part)), 0);
  }

 private:
  PictureReader& picture_;
};

class PictureRowSink : public RowSink {
 public:
  PictureRowSink(PictureWriter& writer, const PictureShape& shape) : writer_(writer), shape_(shape) {}
  bool Write(FloatImage& image) override {
    writer_.Write(ShownAs(shape_, ToPicture(std::move(image))));
    return true;
  }

 private:
  PictureWriter& writer_;
  const PictureShape shape_;
};

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
  RequireRoom(picture.Shape(), factor);
  return PerPlane(picture, [&](const matrix& plane, matrix& large) {
    large.dim(plane.m * factor, plane.n * factor);
    for (int32_t r = 0; r < large.n; ++r)
      for (int32_t x = 0; x < large.m; ++x) large.z[r][x] = plane.z[r / factor][x / factor];
  });
}

Picture InterpolatePicture(const Picture& picture, int32_t factor, Interpolation interpolation) {
  RequireRoom(picture.Shape(), factor);
  const ResampleTable horizontal = InterpolationTable(interpolation, picture.Width(), factor);
  const ResampleTable vertical = InterpolationTable(interpolation, picture.Height(), factor);
  return PerPlane(picture,
                  [&](const matrix& plane, matrix& large) { ResampleSeparable(plane, large, horizontal, vertical); });
}

Picture EnlargeByNet(Picture picture, const NeuralNet& net, NetEnlargement how) {
  const PictureShape shape = picture.Shape();
  RequireEnlargement(net, shape);
  if (!GoesInBands(shape, how)) how.threads = 1;
  FloatImage image = ToFloatImage(std::move(picture));
  NetEnlargeImage(image, net, how.shortcut || shape.channels <= 2, how.average, how.threads);
  return ShownAs(shape, ToPicture(std::move(image)));
}

bool GoesInBands(const PictureShape& shape, const NetEnlargement& how) {
  return how.threads > 1 && shape.height / how.threads >= how.threads;
}

void EnlargeRowsByNet(std::unique_ptr<PictureReader> picture, const NeuralNet& net, const NetEnlargement& how,
                      const std::string& out, const WriteChoice& choice, int32_t stripRows) {
  const PictureShape shape = picture->Shape();
  const int32_t factor = RequireEnlargement(net, shape);
  const auto writer =
      CreateImage(out, {shape.width * factor, shape.height * factor, shape.channels, shape.bits}, choice);
  PictureRowSource source(*picture);
  PictureRowSink sink(*writer, shape);
  NetEnlargeRows(source, sink, net, how.shortcut || shape.channels <= 2, how.average, stripRows);
  picture.reset();  // which may be the very file that is replaced
  writer->Finish();
}

}  // namespace norv
