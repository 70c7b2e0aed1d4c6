// WebP through libwebp, where the build found it.
#ifdef NORV_WEBP

#include <algorithm>
#include <cstring>
#include <webp/decode.h>
#include <webp/encode.h>

#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "kit/formats/webp_metadata.h"
#include "kit/metadata/carry.h"
#include "platform/memory.h"

namespace norv {
namespace {

bool IsWebp(std::span<const uint8_t> start) {
  return start.size() >= 12 && std::memcmp(start.data(), "RIFF", 4) == 0 &&
         std::memcmp(start.data() + 8, "WEBP", 4) == 0;
}

Bytes AllOf(const ByteSource& source) {
  if (static_cast<size_t>(source.size) > AvailableMemory()) Fail("WebP: the file does not fit into memory");
  Bytes bytes(static_cast<size_t>(source.size));
  if (source.read(0, bytes.data(), bytes.size()) != bytes.size()) Fail("WebP: damaged or cut short");
  return bytes;
}

Samples DecodeWebp(const ByteSource& source) {
  const Bytes bytes = AllOf(source);
  WebPBitstreamFeatures features;
  if (WebPGetFeatures(bytes.data(), bytes.size(), &features) != VP8_STATUS_OK) Fail("WebP: damaged or cut short");
  if (features.has_animation) Fail("WebP: an animation is no picture");
  Samples samples({features.width, features.height, features.has_alpha ? 4 : 3});
  const auto decode = features.has_alpha ? WebPDecodeRGBAInto : WebPDecodeRGBInto;
  const int stride = static_cast<int>(samples.RowBytes());
  if (!decode(bytes.data(), bytes.size(), samples.bytes.data(), samples.bytes.size(), stride))
    Fail("WebP: damaged or cut short");
  samples.metadata = ReadWebpMetadata(bytes);
  samples.turn = TurnOfOrientationTag(samples.metadata->orientation);
  return samples;
}

// The format knows no grey: three equal channels instead.
Samples InColour(const Samples& grey) {
  Samples samples({grey.width, grey.height, grey.channels + 2});
  const uint8_t* source = grey.bytes.data();
  for (uint8_t* target = samples.bytes.data(); source != grey.bytes.data() + grey.bytes.size();
       source += grey.channels) {
    for (int k = 0; k < 3; ++k) *target++ = source[0];
    if (grey.channels == 2) *target++ = source[1];
  }
  return samples;
}

// The library wants the file as a whole.
Bytes EncodeWebp(const Samples& any, const EncodingChoice& choice) {
  if (any.channels <= 2) return EncodeWebp(InColour(any), choice);
  uint8_t* memory = nullptr;
  const auto encode = any.channels == 4 ? WebPEncodeRGBA : WebPEncodeRGB;
  const size_t size = encode(any.bytes.data(), any.width, any.height, static_cast<int>(any.RowBytes()),
                             static_cast<float>(choice.Quality()), &memory);
  Bytes bytes(memory, memory + size);
  WebPFree(memory);
  if (size == 0) Fail("WebP: the picture is larger than 16383 x 16383 or memory ran out");
  return bytes;
}

SampleSource OpenWebp(const ByteSource& source, const ReadChoice&) { return HeldSamples(DecodeWebp(source)); }

SampleSink CreateWebp(const ByteSink& sink, const PictureShape& shape, const EncodingChoice& choice) {
  struct Collected {
    Samples samples;
    int32_t next = 0;
  };
  const auto all = std::make_shared<Collected>(Collected{Samples(shape)});
  const auto write = [all](const Samples& rows) {
    std::copy(rows.bytes.begin(), rows.bytes.end(), all->samples.Row(all->next));
    all->next += rows.height;
  };
  const auto finish = [all, sink, choice] {
    const Bytes bytes = WithWebpMetadata(EncodeWebp(all->samples, choice), all->samples.metadata.get());
    if (!sink(0, bytes.data(), bytes.size())) Fail("WebP: cannot be written");
  };
  return {write, finish};
}

}  // namespace

const Codec kWebp = {.name = "WebP",
                     .extensions = {"webp"},
                     .alpha = true,
                     .loss = Loss::byChoice,
                     .mostSide = WEBP_MAX_DIMENSION,
                     .carries = kCarriesIcc | kCarriesExif | kCarriesXmp | kCarriesIptc,
                     .recognise = IsWebp,
                     .open = OpenWebp,
                     .create = CreateWebp};

}  // namespace norv

#endif
