#include "kit/scale/enlarge_picture.h"

#include <utility>

#include "kit/failure.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/premultiplied.h"
#include "kit/scale/scale.h"
#include "net/enlarge.h"
#include "net/layouts.h"
#include "raster/bands.h"

namespace norv {
namespace {

// The network's factor for a picture of this size.
int32_t RequireEnlargement(const NeuralNet& net, const PictureShape& shape) {
  RequireEnlargement(net);
  const int32_t factor = net.LastNi() == 4 ? 2 : 4;
  RequireRoom(shape, factor);
  return factor;
}

// A grey picture with or without alpha from the three equal planes that it was enlarged as.
Picture ShownAs(const PictureShape& shape, Picture picture) {
  if (shape.IsGrey()) picture = GreyPicture(std::move(picture.plane[0]), std::move(picture.plane[3]));
  picture.bits = shape.bits;
  return picture;
}

// A picture's rows as those of an image to be enlarged.
ImageSource ImageRowsOf(const PictureSource& picture) {
  const PictureShape& shape = picture.shape;
  return {{shape.width, shape.height, FloatFormatOf(shape)}, [&picture](FloatImage& rows, int32_t at, int32_t count) {
            Picture part(picture.shape.width, count, picture.shape.channels);
            picture.read(part, 0, count);
            PasteBand(rows, at, ToFloatImage(std::move(part)), 0);
          }};
}

}  // namespace

void RequireEnlargement(const NeuralNet& net) {
  if (const char* reason = WhyNotEvaluable(net)) Fail("%s", reason);
  if (!FindEnlargement(net.N0, net.LastNi()))
    Fail("a network of %d inputs and %d outputs does not enlarge", net.N0, net.LastNi());
}

Picture EnlargeByNet(Picture picture, const NeuralNet& net, NetEnlargement how) {
  const PictureShape shape = picture.Shape();
  RequireEnlargement(net, shape);
  if (!GoesInBands(shape, how)) how.bands = 1;
  Premultiply(picture);
  FloatImage image = ToFloatImage(std::move(picture));
  NetEnlargeImage(image, net, how.shortcut || shape.IsGrey(), how.average, how.bands);
  Picture large = ShownAs(shape, ToPicture(std::move(image)));
  Unpremultiply(large);
  return large;
}

bool GoesInBands(const PictureShape& shape, const NetEnlargement& how) {
  return how.bands > 1 && shape.height / how.bands >= how.bands;
}

void EnlargeRowsByNet(PictureSource picture, const NeuralNet& net, const NetEnlargement& how, const std::string& out,
                      const WriteChoice& choice, int32_t stripRows) {
  const PictureShape shape = picture.shape;
  const int32_t factor = RequireEnlargement(net, shape);
  const PictureSink file = Unpremultiplied(
      CreateImage(out, {shape.width * factor, shape.height * factor, shape.channels, shape.bits}, choice));
  picture = Premultiplied(picture);
  const auto take = [&](FloatImage& rows) {
    file.write(ShownAs(shape, ToPicture(std::move(rows))));
    return true;
  };
  NetEnlargeRows(ImageRowsOf(picture), take, net, how.shortcut || shape.IsGrey(), how.average, stripRows);
  picture = {};  // which may be the very file that is replaced
  file.finish();
}

}  // namespace norv
