#include "restore/bit_process.h"
#include "restore/restore_image.h"
#include "support/random_image.h"
#include "support/restoration.h"
#include "support/test.h"

namespace {

using Bytes = std::array<uint8_t, 3>;

Bytes Convert(float first, float second, float third) {
  const float colour[3] = {first, second, third};
  Bytes bytes;
  ToBytes(colour, bytes.data());
  return bytes;
}

Bytes Converted(const FloatImage& display, int32_t r, int32_t c) {
  return Convert(display.plane[0].z[r][c], display.plane[1].z[r][c], display.plane[2].z[r][c]);
}

Bytes PixelOf(const BitImage& image, int32_t row, int32_t column) {
  const uint8_t* pixel = image.rows[row] + 3 * column;
  return {pixel[0], pixel[1], pixel[2]};
}

BitImage Filled(int32_t width, int32_t height, uint8_t byte) {
  BitImage image(width, height);
  std::memset(image.pixels.get(), byte, image.size);
  return image;
}

}  // namespace

TEST_CASE("colours to bytes: hue is kept, the third value comes first") {
  const float infinity = std::numeric_limits<float>::infinity(), nan = std::nanf("");
  CHECK(Convert(0, 150, 300) == Bytes{255, 128, 0});
  CHECK(Convert(-5, 10.5f, 10.4999f) == Bytes{10, 11, 0});
  CHECK(Convert(-1000, 510, 255) == Bytes{128, 255, 0});
  CHECK(Convert(255, 254.5f, 254.49f) == Bytes{254, 255, 255});
  CHECK(Convert(nan, 7, -nan) == Bytes{0, 7, 0});
  CHECK(Convert(infinity, 7, -infinity) == Bytes{0, 0, 255});
  CHECK(Convert(infinity, infinity, 3e38f) == Bytes{0, 255, 255});
  CHECK(Convert(3e38f, 1.5e38f, nan) == Bytes{0, 128, 255});
}

TEST_CASE("a paste converts every pixel as ToBytes does, in every format") {
  for (const int32_t format : {kDefaultFormat, int32_t{kLuminance}, int32_t{kWithFourth}}) {
    CAPTURE(format);
    const FloatImage source = RandomColours(263, 3, format, -40, 330);  // more than a block, and an odd rest
    BitImage image = Filled(263, 3, 9);
    PasteToBitImage(image, 0, 0, source, nullptr, 0, 0, 0, 0);
    FloatImage display = source;
    display.ConvertTo(kDefaultFormat);
    for (int32_t r = 0; r < 3; ++r) {
      for (int32_t c = 0; c < 263; ++c) CHECK(PixelOf(image, r, c) == Converted(display, r, c));
      CHECK(image.rows[r][3 * 263] == 9);  // the padding is nobody's
    }
  }
}

TEST_CASE("a paste leaves out margins, masked pixels and what lies outside") {
  const FloatImage source = RandomColours(8, 7, kDefaultFormat, -40, 330);
  BitMask mask;
  mask.Resize(5, 6);
  for (int32_t k = 0; k < 30; ++k)
    if (k % 3 != 1) mask.Set(k / 5, k % 5);
  // Written are the source's rows 2 to 5 and columns 1 to 5.
  for (const BitMask* use : {static_cast<const BitMask*>(nullptr), static_cast<const BitMask*>(&mask)})
    for (int32_t place = 0; place < 16 * 15; ++place) {
      const int32_t y0 = place / 15 - 8, x0 = place % 15 - 8;
      BitImage image = Filled(5, 6, 77);
      PasteToBitImage(image, x0, y0, source, use, 1, 2, 2, 1);
      for (int32_t k = 0; k < 30; ++k) {
        const int32_t y = k / 5, x = k % 5, r = y - y0 + 2, c = x - x0 + 1;
        const bool written = r >= 2 && r <= 5 && c >= 1 && c <= 5 && (!use || use->Get(y, x));
        CHECK(PixelOf(image, y, x) == (written ? Converted(source, r, c) : Bytes{77, 77, 77}));
      }
    }
  BitImage image = Filled(5, 6, 77);
  PasteToBitImage(image, 0, 0, source, nullptr, 6, 6, 0, 0);  // margins that leave nothing
  CHECK(PixelOf(image, 0, 0) == Bytes{77, 77, 77});
}

TEST_CASE("a bit image in bands has the bytes of the float image in bands") {
  const RestoreParameters parameters = TestParameters(0, 2, 1);  // emphasis: rounding makes no other bytes of it
  BitImage bits = Filled(6, 272, 0), expected = Filled(12, 544, 0);
  FloatImage image(6, 272, kDefaultFormat);
  for (int32_t i = 0; i < 3 * image.count; ++i) {
    const int32_t k = i % 3, c = i / 3 % 6, r = i / 18;
    image.plane[k].z[r][c] = bits.rows[r][3 * c + 2 - k] = static_cast<uint8_t>(i * i * 37 % 251);
  }
  RestoreImageInBands(image, parameters, 16, 1);
  PasteToBitImage(expected, 0, 0, image, nullptr, 0, 0, 0, 0);
  // Each band in a thread of its own, so that some end after the one below them: none may write beyond its rows.
  ProcessBitImageInBands(bits, parameters, kDefaultFormat, 16, 16);
  CHECK(std::equal(bits.pixels.get(), bits.pixels.get() + bits.size, expected.pixels.get()));
}
