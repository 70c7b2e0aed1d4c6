// WebP, and what is read only: JPEG XL, AVIF and HEIC.
#include <cstring>
#include <doctest/doctest.h>
#ifdef NORV_WEBP
#include <webp/encode.h>
#include <webp/mux.h>
#endif

#include "kit/formats/codec.h"
#include "kit/metadata/metadata.h"
#include "kit/picture_patterns.h"
#include "support/places.h"
#include "support/scratch.h"

using namespace norv;
using test::Pattern;
using test::Refusal;
using test::Shape;

namespace {

// Small files that were made by the libraries' own programs.
[[maybe_unused]] Bytes Kept(const char* name) {
  const std::string text = test::ReadBytes(test::SourceFolder() + "/tests/pictures/" + name);
  return {text.begin(), text.end()};
}

}  // namespace

#ifdef NORV_WEBP
TEST_CASE("WebP keeps every sample where asked, and where the input came so") {
  const auto isKept = [](const Samples& samples, const EncodingChoice& choice) {
    const Samples again = kWebp.Decode(kWebp.Encode(samples, choice));
    CHECK((again.metadata && again.metadata->lossless) == (again.bytes == samples.bytes));
    return again.bytes == samples.bytes;
  };
  // Alpha is anything, 0 too: the colours below stay.
  Samples samples = Pattern(40, 30, 4, 8);
  samples.bytes[3] = 0;
  CHECK(isKept(samples, {.lossless = true}));
  CHECK(!isKept(samples, {}));
  const auto metadata = std::make_shared<Metadata>();
  metadata->lossless = true;
  samples.metadata = metadata;
  CHECK(isKept(samples, {}));
  CHECK(!isKept(samples, {.quality = 80}));
}

TEST_CASE("of an animated WebP any frame is read, as it is shown") {
  WebPAnimEncoderOptions options;
  REQUIRE(WebPAnimEncoderOptionsInit(&options));
  WebPAnimEncoder* encoder = WebPAnimEncoderNew(16, 8, &options);
  for (int frame = 0; frame < 3; ++frame) {
    WebPConfig config;
    WebPPicture picture;
    REQUIRE((WebPConfigInit(&config) && WebPPictureInit(&picture)));
    config.lossless = config.exact = picture.use_argb = 1;
    picture.width = 16;
    picture.height = 8;
    Bytes rgb(16 * 8 * 3, 10);
    rgb[0] = static_cast<uint8_t>(100 + frame);  // the library stores only what changed
    REQUIRE(WebPPictureImportRGB(&picture, rgb.data(), 48));
    REQUIRE(WebPAnimEncoderAdd(encoder, &picture, 100 * frame, &config));
    WebPPictureFree(&picture);
  }
  WebPAnimEncoderAdd(encoder, nullptr, 300, nullptr);
  WebPData data;
  WebPDataInit(&data);
  REQUIRE(WebPAnimEncoderAssemble(encoder, &data));
  WebPAnimEncoderDelete(encoder);
  const Bytes file(data.bytes, data.bytes + data.size);
  WebPDataClear(&data);
  for (int32_t page = 1; page <= 3; ++page) {
    const Samples samples = kWebp.Decode(file, {.page = page});
    CHECK(Shape(samples) == std::array<int32_t, 4>{16, 8, 3, 8});
    CHECK(samples.pages == 3);
    CHECK(samples.bytes[0] == 99 + page);
    CHECK(samples.bytes[5] == 10);
  }
  CHECK(Refusal(kWebp, file, {.page = 4}) == "WebP: frame 4 of a file of 3");
}
#endif

#ifdef NORV_JXL
TEST_CASE("JPEG XL is read with alpha, depth, frames and turned once") {
  const Samples alpha = kJxl.Decode(Kept("alpha.jxl"));
  CHECK(Shape(alpha) == std::array<int32_t, 4>{3, 2, 4, 8});
  CHECK(alpha.bytes ==
        Bytes{255, 0, 0, 255, 0, 255, 0, 128, 0, 0, 255, 0, 10, 20, 30, 255, 40, 50, 60, 255, 70, 80, 90, 255});
  const Samples deep = kJxl.Decode(Kept("deep.jxl"));
  CHECK(Shape(deep) == std::array<int32_t, 4>{3, 2, 3, 16});
  CHECK(deep.bytes[18] == deep.bytes[19]);  // 10 * 257
  CHECK(deep.bytes[18] == 10);
  const Samples first = kJxl.Decode(Kept("frames.jxl")), second = kJxl.Decode(Kept("frames.jxl"), {.page = 2});
  CHECK(first.pages == 2);
  for (const size_t at : {0, 1, 2}) CHECK(first.bytes[12 + at] == 255 - second.bytes[12 + at]);
  CHECK(Refusal(kJxl, Kept("frames.jxl"), {.page = 3}) == "JPEG XL: frame 3 of a file of 2");
  const Samples turned = kJxl.Decode(Kept("turned.jxl"));  // 16 x 8, the left half dark, to be turned clockwise
  CHECK(Shape(turned) == std::array<int32_t, 4>{8, 16, 1, 8});
  CHECK(turned.turn == 0);
  CHECK(turned.bytes[0] < 40);
  CHECK(turned.bytes[8 * 15] > 90);
  CHECK((turned.metadata && !turned.metadata->exif.empty()));
}
#endif

#ifdef NORV_HEIF
TEST_CASE("AVIF and HEIC are read, grey as grey, any of several pictures") {
  struct Row {
    const char* name;
    const Codec* codec;
    int32_t page;
    std::array<int32_t, 4> shape;
    Bytes upper, lower;  // of the first column
  };
  const Row rows[] = {{"colours.avif", &kAvif, 1, {24, 16, 3, 8}, {200, 40, 40}, {30, 60, 220}},
                      {"colours.heic", &kHeic, 1, {24, 16, 3, 8}, {200, 40, 40}, {30, 60, 220}},
                      {"two.avif", &kAvif, 2, {16, 16, 1, 8}, {30}, {100}},
                      {"grey.avif", &kAvif, 1, {16, 16, 1, 8}, {30}, {100}}};
  for (const Row& row : rows) {
    CAPTURE(row.name);
    const Bytes file = Kept(row.name);
    CHECK(CodecOfContents(file) == row.codec);
    const Samples samples = row.codec->Decode(file, {.page = row.page});
    CHECK(Shape(samples) == row.shape);
    for (size_t k = 0; k < row.upper.size(); ++k) {
      CHECK(std::abs(samples.Row(0)[k] - row.upper[k]) <= 8);
      CHECK(std::abs(samples.Row(15)[k] - row.lower[k]) <= 8);
    }
  }
  CHECK(Refusal(kAvif, Kept("two.avif"), {.page = 3}) == "AVIF: picture 3 of a file of 2");
  CHECK(Refusal(kAvif, Kept("two.avif")) == "");
}
#endif

TEST_CASE("what is read only is refused cut anywhere and damaged ends in a picture or a reason") {
  std::vector<std::pair<const Codec*, Bytes>> files;
#ifdef NORV_JXL
  files.emplace_back(&kJxl, Kept("alpha.jxl"));
#endif
#ifdef NORV_HEIF
  files.emplace_back(&kAvif, Kept("grey.avif"));
#endif
  uint32_t state = 1;
  for (const auto& [codec, whole] : files) {
    CAPTURE(codec->name);
    CHECK(!codec->create);
    for (size_t length = 0; length + 1 < whole.size(); length += 7)
      CHECK(Refusal(*codec, Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length))) != "");
    int refused = 0;
    for (int run = 0; run < 100; ++run) {
      Bytes bytes = whole;
      state = state * 1664525 + 1013904223;
      bytes[state / 65536 % bytes.size()] ^= static_cast<uint8_t>(1 << (state >> 29));
      refused += !Refusal(*codec, bytes).empty();
    }
    CHECK(refused > 10);
  }
}
