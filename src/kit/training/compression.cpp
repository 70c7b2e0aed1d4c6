#include "kit/training/compression.h"

#include <algorithm>
#include <charconv>

#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/picture_samples.h"
#include "kit/training/name_hash.h"

namespace norv {
namespace {

// Enough rows for blocks to be learned from, few enough for every picture to show many qualities.
constexpr int32_t kBandRows = 64;

int32_t ReadQuality(const std::string& word, const std::string& words) {
  int32_t quality = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), quality);
  if (error != std::errc() || end != word.data() + word.size() || quality < 1 || quality > 100)
    throw WrongUsage("--jpeg: " + words + " is no range of qualities like 30-95 (1 to 100)");
  return quality;
}

}  // namespace

QualityRange ReadQualityRange(const std::string& words) {
  const size_t dash = words.find('-');
  QualityRange range;
  range.low = ReadQuality(words.substr(0, dash), words);
  range.high = dash == std::string::npos ? range.low : ReadQuality(words.substr(dash + 1), words);
  if (range.high < range.low) std::swap(range.low, range.high);
  return range;
}

void CompressLuminance(matrix& plane, int32_t quality) {
  int64_t moved = 0;
  const Samples samples = ToSamples(GreyPicture(matrix(plane)), 8, moved);
  Picture seen = ToPicture(kJpeg.Decode(kJpeg.Encode(samples, {.quality = quality})));
  plane.swap(seen.plane[0]);
}

void CompressInBands(matrix& plane, const QualityRange& range, const std::string& name) {
  for (int32_t first = 0, rows; first < plane.n; first += rows) {
    rows = std::min(kBandRows, plane.n - first);
    matrix band(plane.m, rows);
    std::copy_n(plane.z[first], band.mn, band.x);
    const uint64_t draw = HashOf(name + "/" + std::to_string(first));
    CompressLuminance(band, range.low + static_cast<int32_t>((draw >> 32) % (range.high - range.low + 1)));
    std::copy_n(band.x, band.mn, plane.z[first]);
  }
}

}  // namespace norv
