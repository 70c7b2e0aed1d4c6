#include "kit/picture.h"

#include <algorithm>
#include <cmath>

#include "kit/bytes.h"
#include "kit/failure.h"
#include "platform/console.h"
#include "raster/orient.h"

namespace norv {
namespace {

// Sample values of one step on the 0..255 scale.
constexpr double StepsOf(int32_t bits) { return bits == 16 ? 257 : 1; }

template <typename T>
void UnpackRow(const Samples& samples, int32_t r, Picture& picture) {
  const T* source = reinterpret_cast<const T*>(samples.Row(r));
  constexpr double kSteps = StepsOf(8 * sizeof(T));
  for (int32_t k = 0; k < samples.channels; ++k) {
    float* target = picture.plane[k].z[r];
    for (int32_t x = 0; x < samples.width; ++x)
      target[x] = static_cast<float>(source[size_t(x) * samples.channels + k] / kSteps);
  }
}

template <typename T>
int64_t PackRow(const Picture& picture, int32_t r, Samples& samples) {
  T* target = reinterpret_cast<T*>(samples.Row(r));
  constexpr double kSteps = StepsOf(8 * sizeof(T)), kMost = 255 * kSteps;
  int64_t moved = 0;
  for (int32_t k = 0; k < samples.channels; ++k) {
    const float* source = picture.plane[k].z[r];
    for (int32_t x = 0; x < samples.width; ++x) {
      const double value = std::floor(source[x] * kSteps + 0.5);
      const bool inside = value >= 0 && value <= kMost;  // false for a NaN
      moved += !inside;
      target[size_t(x) * samples.channels + k] = static_cast<T>(inside ? value : value > 0 ? kMost : 0);
    }
  }
  return moved;
}

Picture WithoutAlpha(const Picture& picture) {
  Picture opaque = picture;
  opaque.Alpha().freemem();
  opaque.channels = picture.Colours();
  return opaque;
}

Picture Decode(const Bytes& bytes) {
  const Codec* codec = CodecOfContents(bytes);
  if (!codec) Fail("no picture of a known format (%s)", KnownFormats().c_str());
  return ToPicture(codec->decode(bytes));
}

}  // namespace

Picture::Picture(int32_t width, int32_t height, int32_t newChannels) : channels(newChannels) {
  for (int32_t k = 0; k < channels; ++k) plane[k].dim(width, height);
}

Picture ToPicture(const Samples& samples) {
  Picture picture(samples.width, samples.height, samples.channels);
  picture.bits = samples.bits;
  for (int32_t r = 0; r < samples.height; ++r)
    (samples.bits == 16 ? UnpackRow<uint16_t> : UnpackRow<uint8_t>)(samples, r, picture);
  if (samples.turn == 0) return picture;
  for (int32_t k = 0; k < samples.channels; ++k) {
    matrix upright;
    OrientMatrix(upright, picture.plane[k], samples.turn);
    picture.plane[k].swap(upright);
  }
  return picture;
}

Samples ToSamples(const Picture& picture, int32_t bits, int64_t& moved) {
  Samples samples;
  samples.Allocate(picture.Width(), picture.Height(), picture.channels, bits);
  for (int32_t r = 0; r < samples.height; ++r)
    moved += (bits == 16 ? PackRow<uint16_t> : PackRow<uint8_t>)(picture, r, samples);
  return samples;
}

Picture ReadPicture(const std::string& path) {
  const Bytes bytes = ReadBytes(path);
  try {
    return Decode(bytes);
  } catch (const Failure& failure) {
    Fail("%s: %s", path.c_str(), failure.what());
  }
}

int64_t WritePicture(const std::string& path, const Picture& picture, const WriteChoice& choice) {
  const Codec* codec = CodecOfName(path);
  if (!codec) Fail("%s: no picture format for this name (%s)", path.c_str(), KnownFormats().c_str());
  if (choice.bits == 16 && !codec->sixteenBits) Fail("%s: %s holds 8 bits a sample only", path.c_str(), codec->name);
  const int32_t bits = choice.bits ? choice.bits : codec->sixteenBits ? picture.bits : 8;
  const bool drop = picture.HasAlpha() && !codec->alpha;
  if (drop) Warn("%s has no place for the alpha plane, which is left out", codec->name);
  int64_t moved = 0;
  Bytes bytes;
  try {
    bytes = codec->encode(ToSamples(drop ? WithoutAlpha(picture) : picture, bits, moved), choice.encoding);
  } catch (const Failure& failure) {
    Fail("%s: %s", path.c_str(), failure.what());
  }
  WriteBytes(path, bytes);
  return moved;
}

}  // namespace norv
