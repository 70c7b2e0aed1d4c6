// Picture files there and back, odd kinds of them, and damaged ones.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <doctest/doctest.h>
#include <jpeglib.h>
#include <png.h>
#include <sys/resource.h>
#include <zlib.h>

#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "kit/picture_patterns.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/picture_rows.h"
#include "kit/pictures/picture_samples.h"
#include "support/scratch.h"

using namespace norv;
using test::Pattern;
using test::Refusal;
using test::Shape;

namespace {

Bytes Encoded(const Codec& codec, const Samples& samples) { return codec.Encode(samples, {}); }

Bytes PaletteOrInterlaced(int colourType, int depth, int interlace, const Bytes& rows, int width, int height,
                          bool transparent) {
  test::ScratchFolder folder;
  FILE* file = std::fopen((folder / "p.png").c_str(), "wb");
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file);
  png_set_IHDR(png, info, width, height, depth, colourType, interlace, 0, 0);
  const png_color palette[4] = {{10, 20, 30}, {40, 50, 60}, {70, 80, 90}, {255, 0, 128}};
  const png_byte alpha[2] = {0, 200};
  if (colourType == PNG_COLOR_TYPE_PALETTE) png_set_PLTE(png, info, palette, 4);
  if (transparent) png_set_tRNS(png, info, alpha, 2, nullptr);
  png_write_info(png, info);
  png_set_packing(png);
  std::vector<png_bytep> pointers;
  const size_t stride = rows.size() / height;
  for (int r = 0; r < height; ++r) pointers.push_back(const_cast<png_bytep>(rows.data() + stride * r));
  png_write_image(png, pointers.data());
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  std::fclose(file);
  const std::string bytes = test::ReadBytes(folder / "p.png");
  return {bytes.begin(), bytes.end()};
}

}  // namespace

TEST_CASE("formats that lose nothing keep every sample that they can hold") {
  for (const Codec* codec : Codecs())
    for (const int32_t bits : {8, 16, 32})
      for (int32_t channels = 1; channels <= (codec->alpha ? 4 : 3); channels += codec->alpha ? 1 : 2) {
        const bool other = (codec == &kPpm && channels == 1) || (codec == &kPgm && channels == 3) ||
                           (codec == &kBmp && channels == 2);  // become another kind
        if (!codec->create || codec->loss != Loss::never || bits < codec->leastBits || bits > codec->mostBits || other)
          continue;
        const Samples samples = Pattern(37, 300, channels, bits);
        const Bytes bytes = Encoded(*codec, samples);
        CHECK(CodecOfContents(bytes) == codec);
        const Samples again = codec->Decode(bytes);
        INFO(codec->name, " of ", channels, " channels of ", bits, " bits");
        CHECK(Shape(again) == Shape(samples));
        CHECK(again.bytes == samples.bytes);
        if (bits == 32) continue;  // within an ulp only
        int64_t moved = 0;
        CHECK(ToSamples(ToPicture(samples), bits, moved).bytes == samples.bytes);
        CHECK(moved == 0);
      }
}

TEST_CASE("formats that lose something lose little of smooth shading") {
  for (const Codec* codec : Codecs())
    for (int32_t channels = 1; codec->loss != Loss::never && channels <= (codec->alpha ? 4 : 3);
         channels += codec->alpha ? 1 : 2) {
      Samples samples = Pattern(50, 40, channels, 8);
      for (int32_t r = 0; r < 40; ++r)
        for (int32_t x = 0; x < 50 * channels; ++x) samples.Row(r)[x] = static_cast<uint8_t>(50 + 3 * r + x / channels);
      const Bytes bytes = Encoded(*codec, samples);
      CHECK(CodecOfContents(bytes) == codec);
      const Picture before = ToPicture(samples), after = ToPicture(codec->Decode(bytes));
      CAPTURE(codec->name);
      CAPTURE(channels);
      CHECK(after.HasAlpha() == before.HasAlpha());
      float worst = 0;
      for (int k = 0; k < 3; ++k)
        for (int32_t i = 0; i < before.plane[0].mn; ++i)
          worst = std::max(worst, std::abs(before.Colour(k).x[i] - after.Colour(k).x[i]));
      CHECK(worst <= 6);
    }
}

TEST_CASE("texts for people name every format, and its file names are known") {
  for (const Codec* codec : Codecs()) {
    CHECK(ReadFormats().find(codec->name) != std::string::npos);
    for (const std::string& extension : codec->extensions) CHECK(CodecOfName("a.b/c." + extension) == codec);
    CHECK((WrittenExtensions("or").find("." + codec->extensions[0]) != std::string::npos) ==
          (codec->create != nullptr));
  }
  CHECK(ReadFormats("or").starts_with("PNG, JPEG"));
  CHECK(LosslessExtensions().starts_with(".png, .tif"));
  CHECK(WrittenExtensions("or").find(" or .") == WrittenExtensions("or").rfind(' ') - 3);
  CHECK(CodecOfName("A.PnG") == &kPng);
  CHECK(!HasPictureName("png"));
  CHECK(!HasPictureName("a.png/b"));
}

TEST_CASE("what is held comes in groups of rows as what is read does") {
  const Samples samples = Pattern(7, 12, 3, 16);
  const SampleSource source = HeldSamples(samples);
  const PictureSource picture = HeldPicture(ToPicture(samples));
  Samples again({7, 12, 3, 16});
  Picture rows(7, 12, 3, 16);
  for (const int32_t first : {0, 5}) {
    source.read(again, first, first == 0 ? 5 : 7);
    picture.read(rows, first, first == 0 ? 5 : 7);
  }
  int64_t moved = 0;
  CHECK(again.bytes == samples.bytes);
  CHECK(ToSamples(rows, 16, moved).bytes == samples.bytes);
}

TEST_CASE("values outside 0..255 move to the nearest end and the rest is rounded to nearest") {
  Picture picture(5, 1, 1);
  const float values[] = {-3, 300, 1.5f, 254.49f, NAN};
  std::copy_n(values, 5, picture.plane[0].x);
  int64_t moved = 0;
  CHECK(ToSamples(picture, 8, moved).bytes == Bytes{0, 255, 2, 254, 0});
  CHECK(moved == 3);
}

TEST_CASE("palettes, few bits, transparency and interlacing are unfolded") {
  const Bytes indices = {0, 1, 2, 3, 3, 2, 1, 0};
  const Samples palette = kPng.Decode(PaletteOrInterlaced(PNG_COLOR_TYPE_PALETTE, 2, 0, indices, 4, 2, false));
  CHECK(Bytes(palette.bytes.begin() + 3, palette.bytes.begin() + 12) == Bytes{40, 50, 60, 70, 80, 90, 255, 0, 128});
  const Samples clear = kPng.Decode(PaletteOrInterlaced(PNG_COLOR_TYPE_PALETTE, 8, 0, indices, 4, 2, true));
  CHECK(Bytes(clear.bytes.begin(), clear.bytes.begin() + 12) == Bytes{10, 20, 30, 0, 40, 50, 60, 200, 70, 80, 90, 255});
  const Samples twoLevels = kPng.Decode(PaletteOrInterlaced(PNG_COLOR_TYPE_GRAY, 1, 0, {0, 1, 1, 0}, 2, 2, false));
  CHECK(twoLevels.bytes == Bytes{0, 255, 255, 0});
  const Samples grey = Pattern(19, 23, 1, 8);
  CHECK(
      kPng.Decode(PaletteOrInterlaced(PNG_COLOR_TYPE_GRAY, 8, PNG_INTERLACE_ADAM7, grey.bytes, 19, 23, false)).bytes ==
      grey.bytes);
}

TEST_CASE("a photograph taken with the camera turned is shown upright") {
  Bytes jpeg = Encoded(kJpeg, Pattern(16, 8, 1, 8));
  // An EXIF segment in big-endian order with just the orientation: turn a quarter clockwise.
  const Bytes exif = {0xFF, 0xE1, 0, 34, 'E', 'x', 'i', 'f', 0, 0, 'M', 'M', 0, 42, 0, 0, 0, 8,
                      0,    1,    1, 18, 0,   3,   0,   0,   0, 1, 0,   6,   0, 0,  0, 0, 0, 0};
  const Picture plain = ToPicture(kJpeg.Decode(jpeg));
  jpeg.insert(jpeg.begin() + 2, exif.begin(), exif.end());
  // Comments longer than what is read at a time are passed over, whatever they say.
  Bytes comment = {0xFF, 0xFE, 0xFF, 0xFF};
  while (comment.size() < 0xFFFF + 2) comment.push_back(comment.size() % 2 ? 0xD9 : 0xFF);
  for (int i = 0; i < 2; ++i) jpeg.insert(jpeg.begin() + 2, comment.begin(), comment.end());
  const Picture turned = ToPicture(kJpeg.Decode(jpeg));
  CHECK(turned.Width() == 8);
  CHECK(turned.Height() == 16);
  CHECK(turned.plane[0].z[0][7] == plain.plane[0].z[0][0]);
  CHECK(turned.plane[0].z[15][7] == plain.plane[0].z[0][15]);
  CHECK(turned.plane[0].z[0][0] == plain.plane[0].z[7][0]);
}

TEST_CASE("a JPEG of four inks becomes RGB") {
  jpeg_compress_struct jpeg;
  jpeg_error_mgr errors;
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  unsigned char* memory = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&jpeg, &memory, &size);
  jpeg.image_width = jpeg.image_height = 8;
  jpeg.input_components = 4;
  jpeg.in_color_space = JCS_CMYK;
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, 100, TRUE);
  jpeg_start_compress(&jpeg, TRUE);
  Bytes row;
  for (int x = 0; x < 8; ++x) row.insert(row.end(), {255, 128, 0, 200});
  for (int r = 0; r < 8; ++r) {
    JSAMPROW pointer = row.data();
    jpeg_write_scanlines(&jpeg, &pointer, 1);
  }
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  const Samples samples = kJpeg.Decode(Bytes(memory, memory + size));
  std::free(memory);
  CHECK(samples.channels == 3);
  CHECK(std::abs(samples.bytes[0] - 200) <= 2);
  CHECK(std::abs(samples.bytes[1] - 100) <= 2);
  CHECK(samples.bytes[2] <= 2);
}

TEST_CASE("a picture cut anywhere is refused with a reason, damaged bytes end in a picture or a reason") {
  uint32_t state = 1;
  for (const Codec* codec : Codecs()) {
    CAPTURE(codec->name);
    if (!codec->create) continue;
    const Bytes whole = Encoded(*codec, Pattern(20, 12, 3, codec->mostBits));
    for (size_t length = 0; length < whole.size(); length += 1 + whole.size() / 400)
      CHECK(Refusal(*codec, Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length))) != "");
    int refused = 0;
    for (int run = 0; run < 500; ++run) {
      Bytes bytes = whole;
      for (int i = 0; i < 3; ++i) {
        state = state * 1664525 + 1013904223;
        bytes[state / 65536 % (run % 2 ? bytes.size() : 64)] ^= static_cast<uint8_t>(1 << (state >> 29));
      }
      refused += !Refusal(*codec, bytes).empty();
    }
    CHECK(refused > 10);
  }
  // The library would go on with grey where a JPEG's data end before its last block.
  Bytes jpeg = Encoded(kJpeg, Pattern(64, 64, 3, 8));
  jpeg[jpeg.size() / 2] = 0xFF;
  jpeg[jpeg.size() / 2 + 1] = 0xD9;
  CHECK(Refusal(kJpeg, jpeg) != "");
}

TEST_CASE("pictures that cannot fit are refused before memory is taken") {
  Bytes png = Encoded(kPng, Pattern(1, 1, 3, 8));
  // Width and height of the header, then its checksum.
  const uint8_t sizes[] = {0, 15, 0x42, 0x3F, 0, 15, 0x42, 0x3F};
  std::copy_n(sizes, 8, png.begin() + 16);
  const uLong checksum = crc32(0, png.data() + 12, 17);
  for (int i = 0; i < 4; ++i) png[29 + i] = static_cast<uint8_t>(checksum >> (24 - 8 * i));
  CHECK(Refusal(kPng, png) == "the picture has more than 2^31 pixels");

#ifndef NORV_SANITIZED  // whose shadow memory is beyond any limit
  // Progressive, as the library then holds all coefficients: the frame's mark and its sides.
  Bytes jpeg = Encoded(kJpeg, Pattern(8, 8, 3, 8));
  const uint8_t mark[] = {0xFF, 0xC0};
  const auto frame = std::search(jpeg.begin(), jpeg.end(), mark, mark + 2);
  REQUIRE(jpeg.end() - frame > 9);
  frame[1] = 0xC2;
  for (const int i : {5, 6, 7, 8}) frame[i] = 0x7F;
  rlimit before;
  REQUIRE(getrlimit(RLIMIT_AS, &before) == 0);
  const rlimit limit{size_t{4} << 30, before.rlim_max};
  REQUIRE(setrlimit(RLIMIT_AS, &limit) == 0);
  const std::string refusal = Refusal(kJpeg, jpeg);
  setrlimit(RLIMIT_AS, &before);
  CHECK(refusal.find("cannot hold") != std::string::npos);
#endif
}
