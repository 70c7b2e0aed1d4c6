#include "net/enlarge.h"

#include <algorithm>
#include <utility>

#include "net/enlarge_plane.h"
#include "net/layouts.h"
#include "net/team_size.h"
#include "platform/assert.h"
#include "platform/team.h"
#include "platform/threads/crew.h"
#include "raster/bands.h"
#include "raster/separable.h"

namespace norv {
namespace {

constexpr char kDoing[] = "Enlarging";

bool HasFourth(const FloatImage& image) { return ModelOf(image.format) == kWithFourth; }

// Planes that go through the network.
int64_t NetworkPlanes(const FloatImage& image, bool shortcut) { return shortcut ? 1 + HasFourth(image) : image.planes; }

void EnlargePlane(const PlaneEnlarger& enlarger, matrix& plane, const Strip& strip, Progress& progress) {
  if (!enlarger.Supported()) return;
  matrix enlarged;
  enlarger.Enlarge(plane, strip, enlarged, progress);
  plane.swap(enlarged);
}

void EnlargeAllChannels(const PlaneEnlarger& enlarger, FloatImage& image, const Strip& strip, Progress& progress) {
  for (int32_t p = 0; p < image.planes; ++p) EnlargePlane(enlarger, image.plane[p], strip, progress);
  image.RefreshSize();
}

// Planes 1 and 2 of a luminance image. A network without outputs has no factor to resample by. across: the table that
// enlarges its rows, where somebody has it already.
void ResampleChrominance(FloatImage& image, int32_t factor, const Strip& strip, const ResampleTable* across) {
  if (factor < 1 || image.count == 0) return;
  ElementCount(EnlargedLength(image.width, factor), EnlargedLength(strip.rows, factor));
  const ResampleTable horizontal = across ? ResampleTable() : EnlargementTable(image.width, factor);
  const ResampleTable vertical = EnlargementTablePart(factor, strip.first * factor, strip.rows * factor);
  for (const int32_t p : {1, 2}) {
    matrix enlarged;
    ResampleSeparable(strip.WindowOf(image.plane[p]), enlarged, across ? *across : horizontal, vertical);
    image.plane[p].swap(enlarged);
  }
}

// Cuts planes that a network without a layout has left larger than plane 0 to as many values.
void FitPlanes(FloatImage& image) {
  for (int32_t p = 1; p < image.planes; ++p) {
    if (image.plane[p].m == image.width && image.plane[p].n == image.height) continue;
    matrix fitted(image.width, image.height);
    std::copy_n(image.plane[p].x, std::min(fitted.mn, image.plane[p].mn), fitted.x);
    image.plane[p].swap(fitted);
  }
}

void EnlargeShortcut(const PlaneEnlarger& enlarger, FloatImage& image, const Strip& strip, Progress& progress,
                     const ResampleTable* across) {
  const int32_t format = image.format;
  matrix fourth;
  if (HasFourth(image)) {
    fourth = image.plane[3];
    image.ConvertTo(kDisplay);
  }
  image.ConvertTo(kLuminance);
  EnlargePlane(enlarger, image.plane[0], strip, progress);
  ResampleChrominance(image, enlarger.Factor(), strip, across);
  image.RefreshSize();
  FitPlanes(image);
  image.ConvertTo(format);
  if (!HasFourth(image)) return;
  // Only now, and with its place empty, so that no enlarged plane is ever held twice.
  image.plane[3].freemem();
  EnlargePlane(enlarger, fourth, strip, progress);
  image.plane[3].swap(fourth);
}

// The strip's window becomes the enlarged strip.
void EnlargeStrip(const PlaneEnlarger& enlarger, FloatImage& image, bool shortcut, const Strip& strip,
                  Progress& progress, const ResampleTable* across = nullptr) {
  shortcut ? EnlargeShortcut(enlarger, image, strip, progress, across)
           : EnlargeAllChannels(enlarger, image, strip, progress);
}

void EnlargeBands(const PlaneEnlarger& enlarger, FloatImage& image, const FloatImage& source, bool shortcut,
                  const BandPlan& plan) {
  const int32_t rows = plan.height + 2 * kLargestRadius, factor = enlarger.Factor();
  Progress progress(kDoing, NetworkPlanes(source, shortcut) * rows * plan.bands);
  ParallelFor(plan.bands, plan.bands, [&](int64_t i) {
    const int32_t first = static_cast<int32_t>(i * plan.height);
    FloatImage band;
    CutBand(source, first - kLargestRadius, rows, band);
    EnlargeStrip(enlarger, band, shortcut, WholeStrip(rows), progress);
    PasteBand(image, first * factor, band, kLargestRadius * factor);
  });
}

void EnlargeWhole(const PlaneEnlarger& enlarger, FloatImage& image, bool shortcut) {
  Progress progress(kDoing, NetworkPlanes(image, shortcut) * image.height);
  EnlargeStrip(enlarger, image, shortcut, WholeStrip(image.height), progress);
}

void EnlargeImage(const PlaneEnlarger& enlarger, FloatImage& image, bool shortcut, int32_t threads) {
  if (threads == 0 || threads == 1 || image.count == 0) return EnlargeWhole(enlarger, image, shortcut);
  const bool banded = IsCutIntoBands(image.height, threads);
  FloatImage source;
  if (banded) source = image;
  image.Redim(EnlargedLength(image.width, enlarger.Factor()), EnlargedLength(image.height, enlarger.Factor()),
              image.format);
  // One band: the cleared image is enlarged, on purpose; see the header.
  banded ? EnlargeBands(enlarger, image, source, shortcut, PlanBands(source.height, threads))
         : EnlargeWhole(enlarger, image, shortcut);
}

void EnlargeChannel(const PlaneEnlarger& enlarger, const matrix& plane, matrix& out) {
  Progress progress(kDoing, plane.n);
  enlarger.Enlarge(plane, WholeStrip(plane.n), out, progress);
}

// Rows of a strip: whole tiles, and so few that its planes stay in the cache from the network to the file.
int32_t RowsOfStrip(int32_t width, int32_t planes, int32_t factor) {
  constexpr int64_t kStripBytes = int64_t{8} << 20;
  // The window, a copy of it and the enlarged planes, of which one comes and one goes.
  const int64_t bytes = int64_t{4} * width * (planes * (2 + factor * factor) + factor * factor);
  const int64_t tiles = kStripBytes / std::max<int64_t>(bytes * kTileRows, 1);
  return static_cast<int32_t>(std::clamp<int64_t>(tiles, 1, 1 << 16) * kTileRows);
}

// The strip with all of its margin, as rows of the bands that it lies in: what is missing at the image's ends is
// mirrored. Margins are even there, so that only what lies outside the image shows of bands.
FloatImage BandedWindow(const FloatImage& window, Strip& strip) {
  FloatImage banded;
  CutBand(window, strip.first - kLargestRadius - strip.windowFirst, strip.rows + 2 * kLargestRadius, banded);
  strip = StripEnlarger::PlanOf(strip.height + 2 * kLargestRadius, strip.first + kLargestRadius, strip.rows);
  return banded;
}

}  // namespace

StripEnlarger::StripEnlarger(const NeuralNet& net, int32_t width, bool shortcut, bool average)
    : enlarger_(std::make_unique<PlaneEnlarger>(net, average)), shortcut_(shortcut) {
  NORV_ASSERT(enlarger_->Supported());
  if (shortcut) across_ = EnlargementTable(width, enlarger_->Factor());
}

StripEnlarger::~StripEnlarger() = default;

int32_t StripEnlarger::Factor() const { return enlarger_->Factor(); }

Strip StripEnlarger::PlanOf(int32_t height, int32_t first, int32_t rows) {
  return PlanStrip(height, first, rows, kLargestRadius);
}

void StripEnlarger::Enlarge(FloatImage& window, const Strip& strip) const {
  Progress silent(kDoing, 0);
  EnlargeStrip(*enlarger_, window, shortcut_, strip, silent, &across_);
}

bool IsCutIntoBands(int32_t rows, int32_t threads) {
  return threads > 1 && IsTeamSize(threads) && PlanBands(rows, threads).bands > 1;
}

void NetEnlargeRows(const ImageSource& source, const TakeRows& take, const NeuralNet& net, bool shortcut, bool average,
                    int32_t threads, int32_t stripRows) {
  const auto enlarger = std::make_shared<const StripEnlarger>(net, source.shape.width, shortcut, average);
  const int32_t height = source.shape.height, planes = FloatImage(0, 0, source.shape.format).planes;
  NORV_ASSERT(planes > 0);
  if (stripRows == 0) stripRows = RowsOfStrip(source.shape.width, planes, enlarger->Factor());
  Progress progress(kDoing, height);
  RowWindow window(source);
  Ahead<FloatImage> ahead(threads);
  int32_t next = 0;
  const auto beginStrip = [&] {
    Strip strip = StripEnlarger::PlanOf(height, next, stripRows);
    next += strip.rows;
    const FloatImage& seen = window.Show(strip);
    const auto image = std::make_shared<FloatImage>(threads > 1 ? BandedWindow(seen, strip) : seen);
    ahead.Begin([enlarger, image, strip] {
      enlarger->Enlarge(*image, strip);
      return std::move(*image);
    });
  };
  for (bool wanted = true; wanted && (next < height || !ahead.Empty());) {
    while (next < height && !ahead.Full()) beginStrip();
    FloatImage rows = ahead.Next();
    progress.Advance(rows.height / enlarger->Factor());
    wanted = take(rows);
  }
}

void NetEnlargeImage(FloatImage& image, const NeuralNet& net, bool shortcut, bool average, int32_t threads) {
  BitMask mask = std::move(image.mask);
  EnlargeImage(PlaneEnlarger(net, average), image, shortcut, threads);
  image.mask = std::move(mask);
}

void NetEnlargeAllChannels(FloatImage& image, const NeuralNet& net, bool average) {
  EnlargeWhole(PlaneEnlarger(net, average), image, false);
}

void NetEnlargeShortcut(FloatImage& image, const NeuralNet& net, bool average) {
  EnlargeWhole(PlaneEnlarger(net, average), image, true);
}

void NetEnlargeChannel(const NeuralNet& net, const matrix& plane, matrix& out) {
  EnlargeChannel(PlaneEnlarger(net, false), plane, out);
}

void NetEnlargeChannelAveraged(const NeuralNet& net, const matrix& plane, matrix& out) {
  EnlargeChannel(PlaneEnlarger(net, true), plane, out);
}

}  // namespace norv
