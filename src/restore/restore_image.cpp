#include "restore/restore_image.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "platform/console.h"
#include "platform/team.h"
#include "raster/bands.h"
#include "raster/separable.h"
#include "restore/edge_mask.h"
#include "restore/memory_need.h"
#include "restore/representation.h"
#include "restore/restore_plane.h"
#include "restore/terms/recipes.h"

namespace norv {
namespace {

// The format that the planes are worked on in.
int32_t WorkingFormat(const RestoreParameters& parameters, int32_t format) {
  const int32_t chosen = RepresentationOf(parameters.representation).format;
  if (chosen != 0) return chosen;
  return ModelOf(format) == kWithFourth ? kDisplay : format;
}

// The Lanczos filter sees nine rows of the small plane: parts below this would mostly make again what others made.
constexpr int64_t kLeastRowsOfPart = 64;

// A plane as it was observed, and the plane of the image that it is enlarged into.
struct PlanePair {
  matrix observed;
  matrix* working;
};

// A thread makes some rows at a time by themselves and copies them to where they belong while they are in its cache.
void EnlargeObserved(PlanePair& pair, Range own, const RestoreParameters& parameters, BitMask& mask,
                     StandingTeam& team) {
  const int32_t f = parameters.factor, reach = MarkingReach(parameters);
  const ResampleTable across = EnlargementTable(pair.observed.m, f);
  matrix enlarged(f * pair.observed.m, f * pair.observed.n);
  const Range made = RowsWithin({own.begin - reach, own.end + reach}, enlarged.n);
  team.ForParts(made.end - made.begin, kLeastRowsOfPart, [&](int64_t begin, int64_t end) {
    constexpr int64_t kRowsAtOnce = 256;
    matrix some;
    for (begin += made.begin, end += made.begin; begin < end; begin += kRowsAtOnce) {
      const int32_t first = static_cast<int32_t>(begin),
                    count = static_cast<int32_t>(std::min(kRowsAtOnce, end - begin));
      ResampleSeparable(pair.observed, some, across, EnlargementTablePart(f, first, count));
      std::copy_n(some.x, some.mn, enlarged.z[first]);
    }
  });
  pair.working->swap(enlarged);
  if (parameters.type == kMarkingType)
    MarkEdges(mask, *pair.working, parameters.edgeThreshold, team, {own.begin - reach + 1, own.end + reach - 1});
}

// Enlarges every plane, then restores the first `restored` and the last one if it was kept aside. What was observed is
// at hand as the part says, and its own rows remain.
void RestorePlanes(std::vector<PlanePair>& planes, const ImagePart& part, int32_t restored, bool lastToo, BitMask& mask,
                   const RestoreParameters& parameters, Progress* progress, StandingTeam& team) {
  const Range own = part.CutFor(parameters).OwnRows();
  for (PlanePair& pair : planes) {
    pair.observed = Spread(std::move(pair.observed), static_cast<int32_t>(part.rows.begin), part.height);
    EnlargeObserved(pair, own, parameters, mask, team);
  }
  GrowMask(mask, parameters.factor / 2, team);
  for (size_t k = 0; k < planes.size(); ++k)
    if (k < static_cast<size_t>(restored) || (lastToo && k + 1 == planes.size()))
      restore(*planes[k].working, mask, planes[k].observed, parameters, progress, team, part.peers);
  for (PlanePair& pair : planes) *pair.working = RowsAlone(std::move(*pair.working), own);
}

void RestoreCounted(FloatImage& image, const ImagePart& part, const RestoreParameters& parameters, Progress* progress,
                    StandingTeam& team) {
  image.mask = BitMask();
  const int32_t format = image.format;
  const bool fourthAside = ModelOf(format) == kWithFourth;
  matrix fourth;
  std::vector<PlanePair> planes;
  if (fourthAside) {
    planes.push_back({image.plane[3], &fourth});
    image.ConvertTo(kDisplay, team);
  }
  image.ConvertTo(WorkingFormat(parameters, format), team);
  const Representation& representation = RepresentationOf(parameters.representation);
  ColourMatrix decorrelating{};
  if (representation.decorrelated) {
    decorrelating = DecorrelatingMatrix(image, team);
    TransformColours(image, decorrelating, team);
  }
  for (int32_t p = image.planes - 1; p >= 0; --p)
    planes.insert(planes.begin(), PlanePair{std::move(image.plane[p]), &image.plane[p]});
  RestorePlanes(planes, part, std::min(representation.restored, image.planes), fourthAside, image.mask, parameters,
                progress, team);
  if (!parameters.keepMask) image.mask = BitMask();
  image.RefreshSize();
  if (representation.decorrelated) TransformColours(image, Transposed(decorrelating), team);
  image.ConvertTo(format, team);
  if (fourthAside) image.plane[3].swap(fourth);
}

void RestoreBand(const FloatImage& source, FloatImage& destination, int32_t row, int32_t height,
                 const RestoreParameters& parameters, Progress* progress, int32_t threads) {
  StandingTeam team(threads);
  FloatImage band;
  CutBand(source, row - kRestoreMargin, height + 2 * kRestoreMargin, band);
  RestoreImage(band, parameters, progress, team);
  PasteBand(destination, row * parameters.factor, band, kRestoreMargin * parameters.factor);
}

}  // namespace

Range RowsAtHand(const RestoreParameters& parameters, int32_t height, bool decorrelated, const Peers& peers) {
  if (decorrelated || peers.Count() == 1) return {0, height};
  const RowRuns cut(height, parameters.factor, 1, peers.Number(), peers.Count());
  return ObservedRows(parameters, cut, cut.BlocksOfPart(peers.Number()));
}

int32_t PlanesWhileWorking(const RestoreParameters& parameters, int32_t format) {
  const ColourModel* model = FindModel(WorkingFormat(parameters, format));
  return model ? model->planes : 3;
}

void CheckRestoration(const RestoreParameters& parameters, int32_t width, int32_t height, int32_t format) {
  if (parameters.factor < 1) throw "the enlargement factor must be 1 or more";
  if (HasUpdates(parameters)) UpdateFilter(parameters);
  if (!FindModel(format)) throw "the image's format code has no colour model";
  const int64_t limit = std::numeric_limits<int32_t>::max();
  const int64_t w = int64_t{width} * parameters.factor, h = int64_t{height} * parameters.factor;
  if (w > limit || h > limit || (h > 0 && w > limit / h)) throw "the enlarged image is too large";
}

void RestoreImage(FloatImage& image, const RestoreParameters& parameters, Progress* progress, StandingTeam& team) {
  RestoreImage(image, ImagePart::Whole(image.height), parameters, progress, team);
}

void RestoreImage(FloatImage& image, const ImagePart& part, const RestoreParameters& parameters, Progress* progress,
                  StandingTeam& team) {
  CheckRestoration(parameters, image.width, part.height, image.format);
  if (image.count == 0) return;
  DemandMemory(RestorationMemory(parameters, image.width, image.height, image.format, team.Threads()));
  RestoreCounted(image, part, parameters, progress, team);
}

void RestorePlanes(std::span<matrix> planes, const RestoreParameters& parameters, Progress* progress,
                   StandingTeam& team) {
  RestorePlanes(planes, ImagePart::Whole(planes[0].n), parameters, progress, team);
}

void RestorePlanes(std::span<matrix> planes, const ImagePart& part, const RestoreParameters& parameters,
                   Progress* progress, StandingTeam& team) {
  const int32_t width = planes[0].m, height = planes[0].n, count = static_cast<int32_t>(planes.size());
  CheckRestoration(parameters, width, part.height, kDefaultFormat);
  if (planes[0].mn == 0) return;
  DemandMemory(PlanesMemory(parameters, width, height, count, team.Threads()));
  std::vector<PlanePair> pairs;
  for (matrix& plane : planes) {
    matrix* const result = &plane;
    pairs.push_back({std::move(plane), result});
  }
  BitMask mask;
  RestorePlanes(pairs, part, count, false, mask, parameters, progress, team);
}

void RestoreImageThreaded(FloatImage& image, const RestoreParameters& parameters, int32_t threads) {
  Say("\nNumber of threads = %d", threads);
  RestoreImageInBands(image, parameters, threads, threads);
}

void RestoreImageInBands(FloatImage& image, const RestoreParameters& parameters, int32_t bands, int32_t threads) {
  CheckRestoration(parameters, image.width, image.height, image.format);
  if (image.count == 0) return;
  const BandPlan plan = PlanBands(image.height, std::max(bands, 1));
  CheckRestoration(parameters, image.width, plan.height + 2 * kRestoreMargin, image.format);
  const int32_t side = std::clamp(threads, 1, plan.bands), f = parameters.factor;
  DemandMemory(4 * int64_t{image.planes} * image.count * f * f +
               BandsMemory(parameters, image.width, plan.height, image.format, side, std::max(threads / side, 1)));
  FloatImage source = std::move(image);
  Progress progress("Restoring", plan.bands * RestorationWork(parameters, source.format));
  image = FloatImage();
  image.Redim(source.width * f, source.height * f, source.format);
  image.mask = std::move(source.mask);
  ParallelFor(side, plan.bands, [&](int64_t i) {
    const int64_t row = i * plan.height;
    if (row < source.height)
      RestoreBand(source, image, static_cast<int32_t>(row), plan.height, parameters, &progress,
                  std::max(threads / side, 1));
  });
}

int64_t RestorationWork(const RestoreParameters& parameters, int32_t format) {
  const int32_t planes = PlanesWhileWorking(parameters, format);
  const int32_t restored = std::min(RepresentationOf(parameters.representation).restored, planes);
  return PlaneWork(parameters) * (restored + (ModelOf(format) == kWithFourth));
}

}  // namespace norv
