#include "kit/scale/restore_picture.h"

#include <algorithm>
#include <cmath>

#include "denoise/denoise.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/strips.h"
#include "kit/scale/premultiplied.h"
#include "platform/console.h"
#include "platform/progress.h"
#include "raster/bands.h"
#include "restore/bit_process.h"
#include "restore/memory_need.h"
#include "restore/representation.h"
#include "restore/restore_image.h"
#include "restore/restore_plane.h"

namespace norv {
namespace {

// What three equal planes of a grey picture have become.
Picture FirstColour(Picture picture) {
  return GreyPicture(std::move(picture.plane[0]), picture.HasAlpha() ? std::move(picture.Alpha()) : matrix());
}

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

// Grey is one plane, whatever the representation, unless that goes by the strength of colours.
bool RestoredByPlanes(const PictureShape& picture, const RestoreParameters& parameters) {
  return picture.IsGrey() && !RepresentationOf(parameters.representation).decorrelated;
}

class StripRestorer {
 public:
  StripRestorer(const PictureShape& picture, const RestoreParameters& parameters, int32_t threads,
                const StripSizes& sizes)
      : picture_(picture),
        parameters_(parameters),
        rows_(RestoredRowsOf(picture, parameters.factor, sizes)),
        byPlanes_(RestoredByPlanes(picture, parameters)),
        team_(threads),
        progress_("Restoring", WorkOfStrip() * ((picture.height + rows_ - 1) / std::max(rows_, 1))) {
    DemandMemory(RestoredStripMemory(picture, parameters, team_.Threads(), sizes));
  }

  // Rows of the result.
  int32_t Rows() const { return rows_ * parameters_.factor; }

  RowRange Needs(RowRange made) const {
    const int32_t f = parameters_.factor;
    const Strip strip = PlanStrip(picture_.height, made.first / f, made.rows / f, kRestoreMargin);
    return {strip.windowFirst, strip.windowRows};
  }

  Picture Make(Picture held, RowRange which, RowRange made) {
    Premultiply(held);
    Picture large = Restored(std::move(held));
    large.bits = picture_.bits;
    if (which.rows * parameters_.factor == made.rows) {
      Unpremultiply(large);
      return large;
    }
    Picture rows(large.Width(), made.rows, large.channels, large.bits);
    CopyPart(large, made.first - which.first * parameters_.factor, made.rows, rows, 0);
    large = Picture();
    Unpremultiply(rows);
    return rows;
  }

 private:
  int64_t WorkOfStrip() const {
    return byPlanes_ ? PlaneWork(parameters_) * picture_.channels
                     : RestorationWork(parameters_, FloatFormatOf(picture_));
  }

  Picture Restored(Picture held) {
    if (byPlanes_) {
      RestorePlanes({held.plane.data(), static_cast<size_t>(held.channels)}, parameters_, &progress_, team_);
      return held;
    }
    FloatImage image = ToFloatImage(std::move(held));
    RestoreImage(image, parameters_, &progress_, team_);
    Picture large = ToPicture(std::move(image));
    return picture_.IsGrey() ? FirstColour(std::move(large)) : std::move(large);
  }

  const PictureShape picture_;
  const RestoreParameters parameters_;
  const int32_t rows_;  // of the picture, of a strip
  const bool byPlanes_;
  StandingTeam team_;
  Progress progress_;
};

}  // namespace

int32_t RestoredRowsOf(const PictureShape& picture, int32_t factor, const StripSizes& sizes) {
  const int64_t row = std::max(int64_t{picture.width} * factor * factor, int64_t{1});
  if (row * picture.height <= sizes.wholePixels) return std::max(picture.height, 1);
  // Margins are to be the smaller part of even the widest picture's strips.
  const int64_t most = std::clamp<int64_t>(sizes.stripPixels / row, 4 * kRestoreMargin, picture.height);
  return EvenStripRows(picture.height, static_cast<int32_t>(most));
}

int64_t RestoredStripMemory(const PictureShape& picture, const RestoreParameters& parameters, int32_t threads,
                            const StripSizes& sizes) {
  const int32_t rows = RestoredRowsOf(picture, parameters.factor, sizes);
  const int32_t held = static_cast<int32_t>(std::min<int64_t>(picture.height, int64_t{rows} + 2 * kRestoreMargin));
  return RestoredByPlanes(picture, parameters)
             ? PlanesMemory(parameters, picture.width, held, picture.channels, threads)
             : RestorationMemory(parameters, picture.width, held, FloatFormatOf(picture), threads);
}

PictureSource RestoredRows(PictureSource picture, const RestoreParameters& parameters, int32_t threads,
                           const StripSizes& sizes) {
  const PictureShape from = picture.shape;
  CheckRestoration(parameters, from.width, std::min(from.height, RestoredRowsOf(from, parameters.factor, sizes)),
                   FloatFormatOf(from));
  const auto restorer = std::make_shared<StripRestorer>(from, parameters, threads, sizes);
  PictureShape shape = from;
  shape.width *= parameters.factor;
  shape.height *= parameters.factor;
  StripWork work{
      [restorer](RowRange made) { return restorer->Needs(made); },
      [restorer](Picture held, RowRange which, RowRange made) { return restorer->Make(std::move(held), which, made); },
      restorer->Rows()};
  // One strip after the other, each by the whole team.
  return InStrips(std::move(picture), shape, std::move(work), 1);
}

Picture RestoreInBands(Picture picture, const RestoreParameters& parameters, int32_t bands, int32_t threads) {
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
  return large;
}

Picture RestoreBytes(Picture picture, const RestoreParameters& parameters, int32_t bands, int32_t threads) {
  if (picture.HasAlpha()) Warn("the way over bytes drops the alpha plane");
  const auto metadata = picture.metadata;
  BitImage image = ToBitImage(ToFloatImage(std::move(picture)));
  WarnOfSingleBand(image.height, bands);
  ProcessBitImageInBands(image, parameters, kDefaultFormat, bands, threads);
  Picture large = ToPicture(image);
  large.metadata = metadata;
  return large;
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
