#include "restore/bit_process.h"

#include <algorithm>
#include <cstring>

#include "platform/assert.h"
#include "platform/progress.h"
#include "platform/team.h"
#include "raster/bands.h"
#include "raster/edges.h"
#include "restore/memory_need.h"
#include "restore/restore_image.h"
#include "simd/bytes/kernels.h"

namespace norv {
namespace {

constexpr int32_t kBlock = 256;  // pixels a step: their scratch stays in the first-level cache

// The display colours of n pixels of a row: the planes themselves where the model is the display's own, else converted
// into scratch.
class ColourReader {
 public:
  explicit ColourReader(const FloatImage& image)
      : image_(image), convert_(image.planes == 4 ? image.fromModel4 : image.fromModel) {
    NORV_ASSERT(image.count == 0 || convert_ != nullptr);
    isDisplay_ = image.planes == 3 && convert_ == FindModel(kDisplay)->fromModel;
  }

  void Read(int32_t row, int32_t column, int32_t n) {
    for (int32_t k = 0; k < 3; ++k) colour[k] = isDisplay_ ? image_.plane[k].z[row] + column : scratch_[k];
    for (int32_t i = 0; i < n && !isDisplay_; ++i) {
      float model[4], display[4];
      for (int32_t k = 0; k < image_.planes; ++k) model[k] = image_.plane[k].z[row][column + i];
      convert_(display, model);
      for (int32_t k = 0; k < 3; ++k) scratch_[k][i] = display[k];
    }
  }

  const float* colour[3];

 private:
  const FloatImage& image_;
  PixelFunction convert_;
  bool isDisplay_;
  float scratch_[3][kBlock];
};

// The part of an axis that is written: source positions first .. end - 1 go to destination positions from
// first + offset on.
struct Span {
  int64_t first, end, offset;
};

Span Clip(int64_t sourceLength, int64_t before, int64_t after, int64_t start, int64_t length) {
  const int64_t offset = start - before;
  return {std::max(before, -offset), std::min(sourceLength - after, length - offset), offset};
}

// The pixels of a row of bytes in the image's format.
void FromBytes(const uint8_t* bytes, FloatImage& image, int32_t row) {
  const PixelFunction convert = image.planes == 4 ? image.toModel4 : image.toModel;
  for (int32_t c = 0; c < image.width; ++c, bytes += 3) {
    const float display[3] = {static_cast<float>(bytes[2]), static_cast<float>(bytes[1]), static_cast<float>(bytes[0])};
    float model[4];
    convert(model, display);
    for (int32_t k = 0; k < image.planes; ++k) image.plane[k].z[row][c] = model[k];
  }
}

void ProcessBand(const BitImage& source, BitImage& destination, int32_t row, int32_t height,
                 const RestoreParameters& parameters, int32_t format, Progress& progress, int32_t threads) {
  StandingTeam team(threads);
  FloatImage band(source.width, height + 2 * kRestoreMargin, format);
  for (int32_t r = 0; r < band.height; ++r)
    FromBytes(source.rows[MirrorIndex(int64_t{row} - kRestoreMargin + r, source.height)], band, r);
  RestoreImage(band, parameters, &progress, team);
  const int32_t margin = kRestoreMargin * parameters.factor;
  PasteToBitImage(destination, 0, row * parameters.factor, band, nullptr, 0, 0, margin, margin);
}

}  // namespace

void ToBytes(const float* colour, uint8_t* out) {
  const float* const values[3] = {colour, colour + 1, colour + 2};
  ActiveByteKernels().fromColours(values, 1, out);
}

void PasteToBitImage(BitImage& dest, int32_t x0, int32_t y0, const FloatImage& source, const BitMask* mask,
                     int32_t left, int32_t right, int32_t top, int32_t bottom) {
  if (dest.count == 0) return;
  const Span y = Clip(source.height, top, bottom, y0, dest.height);
  const Span x = Clip(source.width, left, right, x0, dest.width);
  ColourReader reader(source);
  const auto fromColours = ActiveByteKernels().fromColours;
  for (int64_t r = y.first; r < y.end; ++r) {
    for (int64_t c = x.first; c < x.end; c += kBlock) {
      const int32_t n = static_cast<int32_t>(std::min<int64_t>(kBlock, x.end - c));
      reader.Read(static_cast<int32_t>(r), static_cast<int32_t>(c), n);
      const int32_t row = static_cast<int32_t>(r + y.offset), column = static_cast<int32_t>(c + x.offset);
      uint8_t* target = dest.rows[row] + 3 * column;
      uint8_t bytes[3 * kBlock];
      fromColours(reader.colour, n, mask ? bytes : target);
      for (int32_t i = 0; mask && i < n; ++i)
        if (mask->Get(row, column + i)) std::memcpy(target + 3 * i, bytes + 3 * i, 3);
    }
  }
}

void ProcessBitImage(BitImage& image, const RestoreParameters& parameters, int32_t bandFormat, int32_t threads) {
  ProcessBitImageInBands(image, parameters, bandFormat, threads, threads);
}

void ProcessBitImageInBands(BitImage& image, const RestoreParameters& parameters, int32_t bandFormat, int32_t bands,
                            int32_t threads) {
  const BandPlan plan = PlanBands(image.height, std::max(bands, 1));
  const int32_t side = std::clamp(threads, 1, plan.bands), team = std::max(threads / side, 1);
  CheckRestoration(parameters, image.width, image.height, bandFormat);
  if (image.count > 0) {
    CheckRestoration(parameters, image.width, plan.height + 2 * kRestoreMargin, bandFormat);
    DemandMemory(int64_t{image.size} * parameters.factor * parameters.factor +
                 BandsMemory(parameters, image.width, plan.height, bandFormat, side, team));
  }
  BitImage enlarged(image.width * parameters.factor, image.height * parameters.factor);
  Progress progress("Restoring", plan.bands * RestorationWork(parameters, bandFormat));
  ParallelFor(side, plan.bands, [&](int64_t i) {
    const int64_t row = i * plan.height;
    if (image.count > 0 && row < image.height)
      ProcessBand(image, enlarged, static_cast<int32_t>(row), plan.height, parameters, bandFormat, progress, team);
  });
  image.swap(enlarged);
}

}  // namespace norv
