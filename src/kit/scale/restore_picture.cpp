#include "kit/scale/restore_picture.h"

#include <algorithm>
#include <cmath>

#include "denoise/denoise.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/picture.h"
#include "kit/scale/premultiplied.h"
#include "platform/console.h"
#include "raster/bands.h"
#include "restore/bit_process.h"
#include "restore/restore_image.h"

namespace norv {
namespace {

// Grey as luminance without chrominance, so that two of three planes cost nothing.
FloatImage ColoursOf(Picture& picture) {
  FloatImage image(0, 0, picture.IsGrey() ? kLuminance : kDefaultFormat);
  for (int32_t k = 0; k < picture.Colours(); ++k) image.plane[k].swap(picture.plane[k]);
  for (int32_t k = picture.Colours(); k < 3; ++k) {
    image.plane[k].dim(image.plane[0].m, image.plane[0].n);
    image.plane[k].fill(0);
  }
  image.RefreshSize();
  return image;
}

// As norv does it: as many rows a band as there are bands, or no bands at all.
void WarnOfSingleBand(int32_t rows, int32_t bands) {
  if (bands < 2 || PlanBands(rows, bands).bands == bands) return;
  const int32_t most = static_cast<int32_t>(std::sqrt(static_cast<double>(rows)));
  Warn("%d rows make %d bands at most, so all are restored as one band instead of %d", rows, most, bands);
}

// The denoisers take noise for that of each display colour on its own, of which the luminance has less.
float NoiseOfColours(const Picture& picture, float noise) {
  constexpr float kLuminancePart = 0.66852f;  // sqrt(0.299^2 + 0.587^2 + 0.114^2)
  return picture.IsGrey() ? noise / kLuminancePart : noise;
}

}  // namespace

PictureSource RestoredInBands(PictureSource source, const RestoreParameters& parameters, int32_t bands,
                              int32_t threads) {
  Picture picture = AllRows(source);
  source = {};
  const PictureShape shape = picture.Shape();
  Premultiply(picture);
  FloatImage image = ToFloatImage(std::move(picture));
  WarnOfSingleBand(image.height, bands);
  RestoreImageInBands(image, parameters, bands, threads);
  Picture large = ToPicture(std::move(image));
  if (shape.IsGrey()) large = FirstColour(std::move(large));
  large.bits = shape.bits;
  large.metadata = shape.metadata;
  Unpremultiply(large);
  return HeldPicture(std::move(large));
}

PictureSource RestoredOverBytes(PictureSource source, const RestoreParameters& parameters, int32_t bands,
                                int32_t threads) {
  if (source.shape.HasAlpha()) Warn("the way over bytes drops the alpha plane");
  Picture picture = AllRows(source);
  source = {};
  const auto metadata = picture.metadata;
  BitImage image = ToBitImage(ToFloatImage(std::move(picture)));
  WarnOfSingleBand(image.height, bands);
  ProcessBitImageInBands(image, parameters, kDefaultFormat, bands, threads);
  Picture large = ToPicture(image);
  large.metadata = metadata;
  return HeldPicture(std::move(large));
}

void DenoisePicture(Picture& picture, const DenoiseChoice& choice) {
  const float noise = NoiseOfColours(picture, choice.noise);
  FloatImage image = ColoursOf(picture);
  if (choice.best) {
    GroupRequest request;
    request.sigma = noise;
    request.threads = choice.threads;
    DenoiseByGroups(image, request);
  } else {
    ComponentRequest request;
    request.sigma = noise;
    request.threads = choice.threads;
    request.source = ComponentSource::own;
    DenoiseByComponents(image, request);
  }
  for (int32_t k = 0; k < picture.Colours(); ++k) picture.plane[k].swap(image.plane[k]);
}

PictureSource DenoisedRows(PictureSource picture, const DenoiseChoice& choice) {
  Picture whole = AllRows(picture);
  picture = {};
  DenoisePicture(whole, choice);
  return HeldPicture(std::move(whole));
}

}  // namespace norv
