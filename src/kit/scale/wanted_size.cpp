#include "kit/scale/wanted_size.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "kit/failure.h"
#include "kit/formats/picture_shape.h"
#include "platform/console.h"

namespace norv {
namespace {

int32_t WholePixels(double side) {
  if (!(side <= INT32_MAX)) Fail("the enlarged picture would be too large");
  return std::max(static_cast<int32_t>(std::llround(side)), 1);
}

PictureSize Scaled(const PictureShape& shape, double ratio) {
  return {WholePixels(shape.width * ratio), WholePixels(shape.height * ratio)};
}

PictureSize ByWidth(const PictureShape& shape, int32_t width) {
  return {width, WholePixels(static_cast<double>(shape.height) * width / shape.width)};
}

PictureSize ByHeight(const PictureShape& shape, int32_t height) {
  return {WholePixels(static_cast<double>(shape.width) * height / shape.height), height};
}

// The box itself where the picture fills it but for a pixel, else what fits inside.
PictureSize InBox(const PictureShape& shape, const PictureSize& box) {
  const PictureSize byWidth = ByWidth(shape, box.width), byHeight = ByHeight(shape, box.height);
  if (std::abs(byWidth.height - box.height) <= 1 || std::abs(byHeight.width - box.width) <= 1) return box;
  const PictureSize inside = byWidth.height <= box.height ? byWidth : byHeight;
  Complain("%d x %d keeps the picture's proportions; %d x %d would not", inside.width, inside.height, box.width,
           box.height);
  return inside;
}

PictureSize Sides(const PictureShape& shape, const WantedSize& wanted, Direction direction) {
  if (wanted.by > 0) return Scaled(shape, direction == Direction::larger ? wanted.by : 1 / wanted.by);
  if (wanted.longest > 0)
    return shape.width >= shape.height ? ByWidth(shape, wanted.longest) : ByHeight(shape, wanted.longest);
  if (wanted.height == 0) return ByWidth(shape, wanted.width);
  if (wanted.width == 0) return ByHeight(shape, wanted.height);
  return InBox(shape, {wanted.width, wanted.height});
}

}  // namespace

PictureSize SizeOf(const PictureShape& shape, const WantedSize& wanted, Direction direction) {
  if (shape.width < 1 || shape.height < 1) Fail("the picture has no pixels");
  const PictureSize size = Sides(shape, wanted, direction);
  const bool larger = direction == Direction::larger;
  if (wanted.by == 1 && larger) return size;
  if (size == PictureSize{shape.width, shape.height})
    Fail("the picture has %d x %d pixels already", size.width, size.height);
  if (larger ? size.width < shape.width || size.height < shape.height
             : size.width > shape.width || size.height > shape.height)
    Fail("%d x %d pixels are %s than the picture's %d x %d: norvkit %s does that", size.width, size.height,
         larger ? "less" : "more", shape.width, shape.height, larger ? "shrink" : "enlarge");
  return size;
}

double FactorBetween(const PictureShape& shape, const PictureSize& size) {
  const double ratio = shape.width >= shape.height ? static_cast<double>(size.width) / shape.width
                                                   : static_cast<double>(size.height) / shape.height;
  return std::max(ratio, 1 / ratio);
}

std::string RatioInWords(const PictureShape& shape, const PictureSize& size) {
  const double ratio = shape.width >= shape.height ? static_cast<double>(size.width) / shape.width
                                                   : static_cast<double>(size.height) / shape.height;
  char text[32];
  std::snprintf(text, sizeof text, "x%.4g", ratio);
  return text;
}

}  // namespace norv
