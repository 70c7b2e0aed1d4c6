// WebP through libwebp, where the build found it.
#ifdef NORV_WEBP

#include <algorithm>
#include <cstring>
#include <webp/decode.h>
#include <webp/encode.h>

#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "platform/memory.h"

namespace norv {
namespace {

bool IsWebp(std::span<const uint8_t> start) {
  return start.size() >= 12 && std::memcmp(start.data(), "RIFF", 4) == 0 &&
         std::memcmp(start.data() + 8, "WEBP", 4) == 0;
}

Bytes AllOf(ByteSource& source) {
  if (static_cast<size_t>(source.Size()) > AvailableMemory()) Fail("WebP: the file does not fit into memory");
  Bytes bytes(static_cast<size_t>(source.Size()));
  if (source.Read(0, bytes.data(), bytes.size()) != bytes.size()) Fail("WebP: damaged or cut short");
  return bytes;
}

Samples DecodeWebp(ByteSource& source) {
  const Bytes bytes = AllOf(source);
  WebPBitstreamFeatures features;
  if (WebPGetFeatures(bytes.data(), bytes.size(), &features) != VP8_STATUS_OK) Fail("WebP: damaged or cut short");
  if (features.has_animation) Fail("WebP: an animation is no picture");
  Samples samples;
  samples.Allocate(features.width, features.height, features.has_alpha ? 4 : 3, 8);
  const auto decode = features.has_alpha ? WebPDecodeRGBAInto : WebPDecodeRGBInto;
  const int stride = static_cast<int>(samples.RowBytes());
  if (!decode(bytes.data(), bytes.size(), samples.bytes.data(), samples.bytes.size(), stride))
    Fail("WebP: damaged or cut short");
  return samples;
}

// The format knows no grey: three equal channels instead.
Samples InColour(const Samples& grey) {
  Samples samples;
  samples.Allocate(grey.width, grey.height, grey.channels + 2, 8);
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
                             static_cast<float>(choice.quality), &memory);
  Bytes bytes(memory, memory + size);
  WebPFree(memory);
  if (size == 0) Fail("WebP: the picture is larger than 16383 x 16383 or memory ran out");
  return bytes;
}

class WebpWriter : public SampleWriter {
 public:
  WebpWriter(ByteSink& sink, const SampleShape& shape, const EncodingChoice& choice) : sink_(sink), choice_(choice) {
    samples_.Allocate(shape.width, shape.height, shape.channels, 8);
  }
  void Write(const uint8_t* row) override { std::copy_n(row, samples_.RowBytes(), samples_.Row(next_++)); }
  void Finish() override {
    const Bytes bytes = EncodeWebp(samples_, choice_);
    if (!sink_.Write(0, bytes.data(), bytes.size())) Fail("WebP: cannot be written");
  }

 private:
  ByteSink& sink_;
  EncodingChoice choice_;
  Samples samples_;
  int32_t next_ = 0;
};

std::unique_ptr<SampleReader> OpenWebp(ByteSource& source) { return ReadHeld(DecodeWebp(source)); }

std::unique_ptr<SampleWriter> CreateWebp(ByteSink& sink, const SampleShape& shape, const EncodingChoice& choice) {
  return std::make_unique<WebpWriter>(sink, shape, choice);
}

}  // namespace

const Codec kWebp = {"WebP", {"webp"}, false, true, IsWebp, OpenWebp, CreateWebp};

}  // namespace norv

#endif
