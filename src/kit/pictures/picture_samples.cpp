#include "kit/pictures/picture_samples.h"

#include <limits>

#include "kit/formats/dither.h"
#include "kit/pictures/picture.h"

namespace norv {
namespace {

// Sample values of one step on the 0..255 scale.
constexpr double StepsOf(int32_t bits) { return bits == 32 ? 1.0 / 255 : bits == 16 ? 257 : 1; }

template <typename T>
void Unpack(const uint8_t* row, int32_t r, Picture& picture) {
  const T* source = reinterpret_cast<const T*>(row);
  constexpr double kSteps = StepsOf(8 * sizeof(T));
  for (int32_t k = 0; k < picture.channels; ++k) {
    float* target = picture.plane[k].z[r];
    for (int32_t x = 0; x < picture.Width(); ++x)
      target[x] = static_cast<float>(source[size_t(x) * picture.channels + k] / kSteps);
  }
}

// What is added to the x-th sample of a row before its fraction is cut off.
struct Half {
  double operator()(int32_t) const { return 0.5; }
};
struct Threshold {
  const DitherRow& thresholds;
  double operator()(int32_t x) const { return double{thresholds[x % kDitherSide]}; }
};

// The first `channels` planes.
template <typename T, typename Added = Half>
int64_t Pack(const Picture& picture, int32_t r, int32_t channels, uint8_t* row, Added added = {}) {
  T* target = reinterpret_cast<T*>(row);
  constexpr double kSteps = StepsOf(8 * sizeof(T)), kMost = 255 * kSteps;
  int64_t moved = 0;
  for (int32_t k = 0; k < channels; ++k) {
    const float* source = picture.plane[k].z[r];
    for (int32_t x = 0; x < picture.Width(); ++x) {
      const double value = source[x] * kSteps + added(x);
      const bool inside = value >= 0 && value < kMost + 1;  // false for a NaN
      moved += !inside;
      target[size_t(x) * channels + k] = static_cast<T>(inside ? value : value > 0 ? kMost : 0);
    }
  }
  return moved;
}

void UnpackFrom(const Samples& samples, int32_t sampleRow, int32_t r, Picture& picture) {
  const auto unpack = samples.bits == 32 ? Unpack<float> : samples.bits == 16 ? Unpack<uint16_t> : Unpack<uint8_t>;
  unpack(samples.Row(sampleRow), r, picture);
}

// Floats keep what lies beyond black and white. Of what is no number there is one kind in files, as everywhere.
int64_t PackFloats(const Picture& picture, int32_t r, int32_t channels, uint8_t* row) {
  float* target = reinterpret_cast<float*>(row);
  for (int32_t k = 0; k < channels; ++k) {
    const float* source = picture.plane[k].z[r];
    for (int32_t x = 0; x < picture.Width(); ++x)
      target[size_t(x) * channels + k] =
          source[x] == source[x] ? static_cast<float>(source[x] / 255.0) : std::numeric_limits<float>::quiet_NaN();
  }
  return 0;
}

int64_t PackInto(const Picture& picture, int32_t r, Samples& samples, int32_t sampleRow) {
  uint8_t* row = samples.Row(sampleRow);
  if (samples.bits == 32) return PackFloats(picture, r, samples.channels, row);
  if (samples.bits == 16) return Pack<uint16_t>(picture, r, samples.channels, row);
  return Pack<uint8_t>(picture, r, samples.channels, row);
}

}  // namespace

void UnpackRow(const Samples& row, int32_t r, Picture& picture) { UnpackFrom(row, 0, r, picture); }

int64_t PackRow(const Picture& picture, int32_t r, Samples& row) { return PackInto(picture, r, row, 0); }

int64_t PackRowDithered(const Picture& picture, int32_t r, int32_t y, Samples& row) {
  return Pack<uint8_t>(picture, r, row.channels, row.Row(0), Threshold{DitherRowOf(y)});
}

Picture ToPicture(const Samples& samples) {
  if (samples.turn != 0) return ToPicture(Upright(samples));
  Picture picture(samples.width, samples.height, samples.channels, samples.bits);
  picture.metadata = samples.metadata;
  for (int32_t r = 0; r < samples.height; ++r) UnpackFrom(samples, r, r, picture);
  return picture;
}

Samples ToSamples(const Picture& picture, int32_t bits, int64_t& moved) {
  Samples samples({picture.Width(), picture.Height(), picture.channels, bits});
  for (int32_t r = 0; r < samples.height; ++r) moved += PackInto(picture, r, samples, r);
  return samples;
}

}  // namespace norv
