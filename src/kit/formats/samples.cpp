#include "kit/formats/samples.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

#include "kit/failure.h"
#include "platform/memory.h"
#include "raster/orient.h"

namespace norv {

void RequirePossible(int64_t width, int64_t height) {
  if (width <= 0 || height <= 0) Fail("the picture has no pixels");
  if (width > std::numeric_limits<int32_t>::max() / height) Fail("the picture has more than 2^31 pixels");
}

int64_t MostLikelyBytes(int64_t fileBytes) {
  constexpr int64_t kAlways = int64_t{64} << 20, kMostRatio = 4096;
  return kAlways + kMostRatio * std::min(fileBytes, INT64_MAX / kMostRatio - kAlways);
}

void RequireMemory(int64_t bytes) {
  if (static_cast<uint64_t>(bytes) > AvailableMemory()) Fail("the picture does not fit into memory");
}

void RequireLikely(int64_t bytes, int64_t fileBytes) {
  if (bytes > MostLikelyBytes(fileBytes))
    Fail("a file of %lld bytes cannot hold as many pixels as it claims", static_cast<long long>(fileBytes));
}

void RequireLikely(const PictureShape& shape, int64_t fileBytes) {
  RequirePossible(shape.width, shape.height);
  RequireLikely(static_cast<int64_t>(shape.RowBytes()) * shape.height, fileBytes);
}

Samples::Samples(const PictureShape& shape) : PictureShape(shape) {
  RequirePossible(width, height);
  if (RowBytes() * height > AvailableMemory())
    Fail("the picture of %d x %d pixels does not fit into memory", width, height);
  bytes.assign(RowBytes() * height, 0);
}

SampleSource HeldSamples(Samples samples) {
  struct Held {
    Samples samples;
    int32_t next = 0;
  };
  const auto held = std::make_shared<Held>(Held{std::move(samples)});
  return {held->samples, [held](Samples& rows, int32_t at, int32_t count) {
            std::copy_n(held->samples.Row(held->next), rows.RowBytes() * count, rows.Row(at));
            held->next += count;
          }};
}

Samples AllSamples(const SampleSource& source) {
  Samples samples(source.shape);
  source.read(samples, 0, samples.height);
  return samples;
}

Samples Upright(const Samples& samples) {
  PictureShape shape = samples;
  if (IsTurnedAcross(samples.turn)) std::swap(shape.width, shape.height);
  shape.turn = 0;
  Samples upright(shape);
  uint8_t* target = upright.bytes.data();
  for (int32_t r = 0; r < upright.height; ++r)
    for (int32_t x = 0; x < upright.width; ++x, target += upright.PixelBytes()) {
      const Place place = OrientedPlace(samples.turn, {r, x}, samples.height, samples.width);
      std::copy_n(samples.Row(place.row) + place.column * samples.PixelBytes(), samples.PixelBytes(), target);
    }
  return upright;
}

int32_t TurnOfOrientationTag(int32_t tag) {
  constexpr int32_t kTurns[] = {0, 0, 1, 4, 2, 7, 3, 6, 5};
  return tag >= 1 && tag <= 8 ? kTurns[tag] : 0;
}

}  // namespace norv
