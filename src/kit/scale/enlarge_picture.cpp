#include "kit/scale/enlarge_picture.h"

#include <utility>

#include "kit/failure.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/strips.h"
#include "kit/scale/premultiplied.h"
#include "kit/scale/scale.h"
#include "net/enlarge.h"
#include "net/layouts.h"
#include "raster/bands.h"

namespace norv {
namespace {

// A grey picture with or without alpha from the three equal planes that it was enlarged as.
Picture ShownAs(const PictureShape& shape, Picture picture) {
  if (shape.IsGrey()) picture = GreyPicture(std::move(picture.plane[0]), std::move(picture.plane[3]));
  picture.bits = shape.bits;
  picture.metadata = shape.metadata;
  return picture;
}

}  // namespace

void RequireEnlargement(const NeuralNet& net) {
  if (const char* reason = WhyNotEvaluable(net)) Fail("%s", reason);
  if (!FindEnlargement(net.N0, net.LastNi()))
    Fail("a network of %d inputs and %d outputs does not enlarge", net.N0, net.LastNi());
}

PictureSource EnlargedByNet(PictureSource picture, const NeuralNet& net, const NetEnlargement& how) {
  RequireEnlargement(net);
  const PictureShape shape = picture.shape;
  const auto enlarger = std::make_shared<StripEnlarger>(net, shape.width, how.shortcut || shape.IsGrey(), how.average);
  const int32_t factor = enlarger->Factor();
  RequireRoom(shape, factor);
  PictureShape enlarged = shape;
  enlarged.width *= factor;
  enlarged.height *= factor;
  const auto stripOf = [factor, height = shape.height](RowRange made) {
    return StripEnlarger::PlanOf(height, made.first / factor, made.rows / factor);
  };
  const auto needs = [stripOf](RowRange made) {
    const Strip strip = stripOf(made);
    return RowRange{strip.windowFirst, strip.windowRows};
  };
  const auto make = [stripOf, enlarger, shape](Picture held, RowRange, RowRange made) {
    Premultiply(held);
    FloatImage window = ToFloatImage(std::move(held));
    enlarger->Enlarge(window, stripOf(made));
    Picture rows = ShownAs(shape, ToPicture(std::move(window)));
    Unpremultiply(rows);
    return rows;
  };
  return InStrips(std::move(picture), enlarged, {needs, make}, how.threads);
}

Picture EnlargeByNet(Picture picture, const NeuralNet& net, const NetEnlargement& how) {
  return AllRows(EnlargedByNet(HeldPicture(std::move(picture)), net, how));
}

}  // namespace norv
