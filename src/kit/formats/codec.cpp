#include "kit/formats/codec.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "kit/failure.h"
#include "platform/memory.h"
#include "raster/orient.h"

namespace norv {
namespace {

const Codec* const kCodecs[] = {
    &kPng,
    &kJpeg,
    &kTiff,
#ifdef NORV_WEBP
    &kWebp,
#endif
};

}  // namespace

void SampleShape::Require(int64_t newWidth, int64_t newHeight, int32_t newChannels, int32_t newBits) {
  if (newWidth <= 0 || newHeight <= 0) Fail("the picture has no pixels");
  if (newWidth > std::numeric_limits<int32_t>::max() / newHeight) Fail("the picture has more than 2^31 pixels");
  width = static_cast<int32_t>(newWidth);
  height = static_cast<int32_t>(newHeight);
  channels = newChannels;
  bits = newBits;
}

void Samples::Allocate(int64_t newWidth, int64_t newHeight, int32_t newChannels, int32_t newBits) {
  Require(newWidth, newHeight, newChannels, newBits);
  if (RowBytes() * height > AvailableMemory())
    Fail("the picture of %d x %d pixels does not fit into memory", width, height);
  bytes.assign(RowBytes() * height, 0);
}

std::unique_ptr<SampleReader> ReadHeld(Samples samples) {
  class Held : public SampleReader {
   public:
    explicit Held(Samples samples) : samples_(std::move(samples)) { shape_ = samples_; }
    void Read(uint8_t* row) override { std::copy_n(samples_.Row(next_++), shape_.RowBytes(), row); }

   private:
    Samples samples_;
    int32_t next_ = 0;
  };
  return std::make_unique<Held>(std::move(samples));
}

Samples ReadAll(SampleReader& reader) {
  const SampleShape& shape = reader.Shape();
  Samples samples;
  samples.Allocate(shape.width, shape.height, shape.channels, shape.bits);
  samples.turn = shape.turn;
  for (int32_t r = 0; r < samples.height; ++r) reader.Read(samples.Row(r));
  return samples;
}

Samples Codec::Decode(const Bytes& bytes) const {
  MemorySource source(bytes);
  return ReadAll(*open(source));
}

Bytes Codec::Encode(const Samples& samples, const EncodingChoice& choice) const {
  MemorySink sink;
  const std::unique_ptr<SampleWriter> writer = create(sink, samples, choice);
  for (int32_t r = 0; r < samples.height; ++r) writer->Write(samples.Row(r));
  writer->Finish();
  return std::move(sink.bytes);
}

Samples Upright(const Samples& samples) {
  Samples upright;
  const bool across = IsTurnedAcross(samples.turn);
  upright.Allocate(across ? samples.height : samples.width, across ? samples.width : samples.height, samples.channels,
                   samples.bits);
  uint8_t* target = upright.bytes.data();
  for (int32_t r = 0; r < upright.height; ++r)
    for (int32_t x = 0; x < upright.width; ++x, target += upright.PixelBytes()) {
      const Place place = OrientedPlace(samples.turn, {r, x}, samples.height, samples.width);
      std::copy_n(samples.Row(place.row) + place.column * samples.PixelBytes(), samples.PixelBytes(), target);
    }
  return upright;
}

const Codec* CodecOfContents(std::span<const uint8_t> start) {
  for (const Codec* codec : kCodecs)
    if (codec->recognise(start)) return codec;
  return nullptr;
}

std::string KnownFormats() {
  std::string names;
  for (const Codec* codec : kCodecs) names += (names.empty() ? "" : ", ") + std::string(codec->name);
  return names;
}

const Codec* CodecOfName(const std::string& path) {
  const std::string extension = ExtensionOf(path);
  for (const Codec* codec : kCodecs)
    if (std::ranges::find(codec->extensions, extension) != codec->extensions.end()) return codec;
  return nullptr;
}

std::string ExtensionOf(const std::string& path) {
  const size_t name = path.find_last_of('/') + 1, point = path.find_last_of('.');
  if (point == std::string::npos || point < name) return "";
  std::string extension = path.substr(point + 1);
  for (char& c : extension)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 'a' - 'A');
  return extension;
}

int32_t TurnOfOrientationTag(int32_t tag) {
  constexpr int32_t kTurns[] = {0, 0, 1, 4, 2, 7, 3, 6, 5};
  return tag >= 1 && tag <= 8 ? kTurns[tag] : 0;
}

}  // namespace norv
