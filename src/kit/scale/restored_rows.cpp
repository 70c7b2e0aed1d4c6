#include "kit/scale/restored_rows.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "kit/pictures/conversions.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/strips.h"
#include "kit/ranks/ranks.h"
#include "kit/scale/joint_strips.h"
#include "kit/scale/premultiplied.h"
#include "platform/progress.h"
#include "platform/threads/standing_team.h"
#include "raster/bands.h"
#include "restore/memory_need.h"
#include "restore/representation.h"
#include "restore/restore_image.h"
#include "restore/restore_plane.h"

namespace norv {
namespace {

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
    // Several ranks hold a part of it each.
    if (!World().AreSeveral()) DemandMemory(RestoredStripMemory(picture, parameters, team_.Threads(), sizes));
  }

  // The part of several ranks' strip: its own rows of the result.
  Picture MakePart(PartReader& reader, const Strip& strip, Peers& peers) {
    const bool decorrelated = !byPlanes_ && RepresentationOf(parameters_.representation).decorrelated;
    const ImagePart part{strip.windowRows, RowsAtHand(parameters_, strip.windowRows, decorrelated, peers), peers};
    Picture held = reader.Read(strip.windowFirst + static_cast<int32_t>(part.rows.begin),
                               static_cast<int32_t>(part.rows.end - part.rows.begin));
    Premultiply(held);
    Picture large = Restored(std::move(held), part);
    large.bits = picture_.bits;
    Unpremultiply(large);
    return large;
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
    Picture large = Restored(std::move(held), ImagePart::Whole(which.rows));
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

  Picture Restored(Picture held, const ImagePart& part) {
    if (byPlanes_) {
      RestorePlanes({held.plane.data(), static_cast<size_t>(held.channels)}, part, parameters_, &progress_, team_);
      return held;
    }
    FloatImage image = ToFloatImage(std::move(held));
    RestoreImage(image, part, parameters_, &progress_, team_);
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
  PictureSource made = InStrips(picture, shape, std::move(work), 1);
  made.only = nullptr;  // strips are cut from the top
  if (!picture.only || !World().AreSeveral()) return made;
  const StripCut cut{from.height, parameters.factor, RestoredRowsOf(from, parameters.factor, sizes), kRestoreMargin};
  const auto reader = std::make_shared<PartReader>(std::move(picture), 2 * kRestoreMargin);
  return WithJointStrips(made, cut, [restorer, reader](const Strip& strip, Peers& peers) {
    return restorer->MakePart(*reader, strip, peers);
  });
}

}  // namespace norv
