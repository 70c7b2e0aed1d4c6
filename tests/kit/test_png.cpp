// PNG files: the same samples come back whatever was chosen, and the same bytes are written whatever the threads.
#include <zlib.h>

#include "kit/formats/codec.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/picture_samples.h"
#include "kit/pictures/test_card.h"
#include "support/test.h"

namespace {

// What compresses in different ways: noise, a ramp, and a pattern that comes again further down.
Samples Sample(const PictureShape& shape, int kind) {
  Samples samples(shape);
  uint32_t noise = 1;
  for (size_t i = 0; i < samples.bytes.size(); ++i) {
    noise = noise * 1664525 + 1013904223;
    samples.bytes[i] = static_cast<uint8_t>(kind == 0 ? noise >> 24 : kind == 1 ? i / 40 : i % 7919 * (i % 7919) / 13);
  }
  return samples;
}

// Rows of letters, of which there are forty, on white.
Samples Page(int32_t width, int32_t height) {
  Samples page({width, height, 1, 8});
  const Samples letters = Sample({240, 8, 1, 8}, 0);
  for (int32_t r = 0; r < height; ++r)
    for (int32_t x = 0; x < width; ++x) {
      const int32_t line = r / 12, row = r % 12;
      const bool ink = row < 8 && (x + line * 13) % 97 < 80 && letters.Row(row)[(x + line * 37) % 240] < 100;
      page.Row(r)[x] = ink ? 0 : 255;
    }
  return page;
}

// The contents of all IDAT chunks.
Bytes ImageData(const Bytes& png) {
  Bytes data;
  for (size_t at = 8; at + 12 <= png.size();) {
    const size_t length = size_t{png[at]} << 24 | size_t{png[at + 1]} << 16 | size_t{png[at + 2]} << 8 | png[at + 3];
    if (std::equal(&png[at + 4], &png[at + 8], "IDAT")) data.insert(data.end(), &png[at + 8], &png[at + 8 + length]);
    at += 12 + length;
  }
  return data;
}

void CheckFile(const Samples& samples, int32_t compression) {
  const Bytes png = kPng.Encode(samples, {.compression = std::to_string(compression), .threads = 1});
  CHECK(kPng.Decode(png).bytes == samples.bytes);
  Bytes rows((samples.RowBytes() + 1) * samples.height);
  const Bytes data = ImageData(png);
  uLongf length = rows.size();
  CHECK(uncompress(rows.data(), &length, data.data(), data.size()) == Z_OK);  // and with it the check sum
  CHECK(length == rows.size());
  for (const int32_t threads : {3, 16})
    if (threads == 3 || samples.height < 1000)
      CHECK(kPng.Encode(samples, {.compression = std::to_string(compression), .threads = threads}) == png);
}

}  // namespace

TEST_CASE("every depth, number of channels, size and choice comes back, with the same bytes for any threads") {
  struct Size {
    int32_t width, height;
  };
  for (const Size size : {Size{1, 1}, {1, 150000}, {70000, 2}, {131, 700}})
    for (const int32_t bits : {8, 16})
      for (const int32_t channels : {1, 2, 3, 4}) {
        const int kind = (channels + size.height) % 3, compression = (2 * channels + bits / 8 + size.width) % 9;
        INFO(size.width, " x ", size.height, ", ", bits, " bits, ", channels, " channels, compression ", compression);
        CheckFile(Sample({size.width, size.height, channels, bits}, kind), compression);
      }
  for (const int32_t compression : {0, 1, 2, 5, 6, 9})
    for (const int kind : {0, 1, 2}) CheckFile(Sample({40, 4000, 3, 8}, kind), compression);
}

TEST_CASE("a strip refers to what stands above it, and a row takes the filter that suits it") {
  Samples again = Sample({600, 4000, 1, 8}, 0), slope({600, 4000, 1, 8});
  for (int32_t r = 0; r < again.height; ++r) {
    if (r >= 16) std::copy_n(again.Row(r - 16), again.RowBytes(), again.Row(r));
    for (int32_t x = 0; x < slope.width; ++x) slope.Row(r)[x] = static_cast<uint8_t>(x * x / 64 + r * r / 16);
  }
  CHECK(kPng.Encode(again, {.compression = "6"}).size() < 3 * 16 * again.RowBytes());
  CHECK(kPng.Encode(slope, {}).size() < 100000);
}

TEST_CASE("drawings and text gain by matches, and more trouble makes a smaller file") {
  int64_t moved = 0;
  for (const Samples& drawing : {ToSamples(AllRows(DrawTestCard(300, 200)), 8, moved), Page(1200, 300)}) {
    size_t sizes[10];
    for (const int32_t compression : {0, 1, 5, 6, 9})
      sizes[compression] = kPng.Encode(drawing, {.compression = std::to_string(compression)}).size();
    CHECK(sizes[0] > drawing.bytes.size());
    CHECK(sizes[5] < 0.8 * static_cast<double>(sizes[1]));
    CHECK(sizes[6] < sizes[5]);
    CHECK(sizes[9] < sizes[6]);
  }
}
