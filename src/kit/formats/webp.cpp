// WebP through libwebp, where the build found it.
#ifdef NORV_WEBP

#include <algorithm>
#include <cstring>
#include <memory>
#include <webp/decode.h>
#include <webp/demux.h>
#include <webp/encode.h>

#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "kit/formats/webp_metadata.h"
#include "kit/metadata/carry.h"

namespace norv {
namespace {

constexpr char kDamaged[] = "WebP: damaged or cut short";

bool IsWebp(std::span<const uint8_t> start) {
  return start.size() >= 12 && std::memcmp(start.data(), "RIFF", 4) == 0 &&
         std::memcmp(start.data() + 8, "WEBP", 4) == 0;
}

PictureShape ShapeOf(const WebPBitstreamFeatures& features, const Bytes& bytes) {
  constexpr int kLossless = 2;
  PictureShape shape = {features.width, features.height, features.has_alpha ? 4 : 3};
  Metadata metadata = *ReadWebpMetadata(bytes);
  shape.turn = TurnOfOrientationTag(metadata.orientation);
  metadata.lossless = features.format == kLossless;
  shape.metadata = std::make_shared<const Metadata>(std::move(metadata));
  return shape;
}

// Without alpha where that says nothing.
Samples Opaque(Samples samples) {
  for (size_t i = 3; i < samples.bytes.size(); i += 4)
    if (samples.bytes[i] != 255) return samples;
  PictureShape shape = samples;
  shape.channels = 3;
  Samples opaque(shape);
  for (size_t from = 0, to = 0; from < samples.bytes.size(); from += 4, to += 3)
    std::copy_n(&samples.bytes[from], 3, &opaque.bytes[to]);
  return opaque;
}

// A frame with all that shows through from those before it.
Samples DecodeFrame(const Bytes& bytes, PictureShape shape, int32_t page) {
  WebPAnimDecoderOptions options;
  if (!WebPAnimDecoderOptionsInit(&options)) Fail("WebP: another version of the library");
  options.color_mode = MODE_RGBA;
  const WebPData data = {bytes.data(), bytes.size()};
  const std::unique_ptr<WebPAnimDecoder, void (*)(WebPAnimDecoder*)> decoder(WebPAnimDecoderNew(&data, &options),
                                                                             WebPAnimDecoderDelete);
  WebPAnimInfo info;
  if (!decoder || !WebPAnimDecoderGetInfo(decoder.get(), &info)) Fail(kDamaged);
  shape.pages = static_cast<int32_t>(std::min<uint32_t>(info.frame_count, INT32_MAX));
  if (page > shape.pages) Fail("WebP: frame %d of a file of %d", page, shape.pages);
  shape.channels = 4;
  Samples samples(shape);
  uint8_t* frame = nullptr;
  int time = 0;
  for (int32_t i = 0; i < page; ++i)
    if (!WebPAnimDecoderGetNext(decoder.get(), &frame, &time)) Fail(kDamaged);
  std::copy_n(frame, samples.bytes.size(), samples.bytes.data());
  return Opaque(std::move(samples));
}

Samples DecodeWebp(const ByteSource& source, const ReadChoice& choice) {
  const Bytes bytes = AllBytes(source);
  WebPBitstreamFeatures features;
  if (WebPGetFeatures(bytes.data(), bytes.size(), &features) != VP8_STATUS_OK) Fail(kDamaged);
  const PictureShape shape = ShapeOf(features, bytes);
  RequireLikely(shape, source.size);
  RequireMemory(int64_t{2} * 4 * shape.width * shape.height);  // of the library's own, beside the samples
  if (features.has_animation) return DecodeFrame(bytes, shape, choice.Page());
  Samples samples(shape);
  const auto decode = features.has_alpha ? WebPDecodeRGBAInto : WebPDecodeRGBInto;
  const int stride = static_cast<int>(samples.RowBytes());
  if (!decode(bytes.data(), bytes.size(), samples.bytes.data(), samples.bytes.size(), stride)) Fail(kDamaged);
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

// Owns what the library writes and its copy of the pixels.
struct WebpEncoder {
  WebPConfig config;
  WebPPicture picture;
  WebPMemoryWriter writer;

  explicit WebpEncoder(int32_t quality) {
    WebPMemoryWriterInit(&writer);
    if (!WebPConfigPreset(&config, WEBP_PRESET_DEFAULT, static_cast<float>(quality)) || !WebPPictureInit(&picture))
      Fail("WebP: another version of the library");
    picture.writer = WebPMemoryWrite;
    picture.custom_ptr = &writer;
  }
  ~WebpEncoder() {
    WebPPictureFree(&picture);
    WebPMemoryWriterClear(&writer);
  }
  WebpEncoder(const WebpEncoder&) = delete;
  WebpEncoder& operator=(const WebpEncoder&) = delete;

  // The colours below transparent alpha too. Level: of the library, 0 to 9 for the smallest file.
  void KeepAll() {
    constexpr int kLevel = 6;
    if (!WebPConfigLosslessPreset(&config, kLevel)) Fail("WebP: another version of the library");
    config.exact = 1;
    picture.use_argb = 1;
  }
};

// What came without a loss stays so where nobody says otherwise.
bool KeepsAll(const PictureShape& shape, const EncodingChoice& choice) {
  return choice.lossless || (choice.quality == 0 && shape.metadata && shape.metadata->lossless);
}

// The library wants the file as a whole.
Bytes EncodeWebp(const Samples& samples, int32_t quality, bool lossless) {
  if (samples.channels <= 2) return EncodeWebp(InColour(samples), quality, lossless);
  WebpEncoder encoder(quality);
  if (lossless) encoder.KeepAll();
  encoder.picture.width = samples.width;
  encoder.picture.height = samples.height;
  const auto take = samples.channels == 4 ? WebPPictureImportRGBA : WebPPictureImportRGB;
  if (!take(&encoder.picture, samples.bytes.data(), static_cast<int>(samples.RowBytes())) ||
      !WebPEncode(&encoder.config, &encoder.picture))
    Fail("WebP: the picture is larger than 16383 x 16383 or memory ran out");
  return {encoder.writer.mem, encoder.writer.mem + encoder.writer.size};
}

SampleSource OpenWebp(const ByteSource& source, const ReadChoice& choice) {
  return HeldSamples(DecodeWebp(source, choice));
}

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
    const Samples& samples = all->samples;
    const Bytes bytes =
        WithWebpMetadata(EncodeWebp(samples, choice.Quality(), KeepsAll(samples, choice)), samples.metadata.get());
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
                     .several = "frames",
                     .carries = kCarriesIcc | kCarriesExif | kCarriesXmp | kCarriesIptc,
                     .recognise = IsWebp,
                     .open = OpenWebp,
                     .create = CreateWebp};

}  // namespace norv

#endif
