// Colour and alpha through every command that makes pictures of pictures.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <doctest/doctest.h>
#include <png.h>
#include <set>
#include <string>
#include <tiffio.h>
#include <utility>
#include <vector>

#include "kit/pictures/picture.h"
#include "kit/pictures/picture_file.h"
#include "kit/scale/premultiplied.h"
#include "support/kit.h"
#include "support/scratch.h"

using namespace norv;
using test::KitIn;

namespace {

// A disc of alpha 255 on alpha 0, its edge one pixel wide; the colours inside and outside are one each.
Picture Disc(int32_t channels, int32_t bits, float inside, float outside) {
  Picture picture(30, 28, channels, bits);
  for (int32_t r = 0; r < 28; ++r)
    for (int32_t x = 0; x < 30; ++x) {
      const float alpha =
          std::clamp(10.5f - std::hypot(static_cast<float>(x - 15), static_cast<float>(r - 13)), 0.f, 1.f);
      picture.Alpha().z[r][x] = 255 * alpha;
      for (int32_t k = 0; k < picture.Colours(); ++k) picture.plane[k].z[r][x] = alpha > 0 ? inside : outside;
    }
  return picture;
}

// All that makes a picture larger or smaller; `net.net` is beside it.
const char* const kScaling[] = {"enlarge IN OUT --method nearest",
                                "enlarge IN OUT --method cubic",
                                "enlarge IN OUT --method lanczos --factor 3",
                                "enlarge IN OUT --net net.net",
                                "enlarge IN OUT --net net.net --average --shortcut",
                                "enlarge IN OUT --net net.net --threads 4",
                                "restore IN OUT",
                                "restore IN OUT --factor 1 --preset compressed --threads 2",
                                "shrink IN OUT",
                                "shrink IN OUT --factor 3 --order 3"};

double MeanOf(const matrix& plane) {
  double sum = 0;
  for (int32_t i = 0; i < plane.mn; ++i) sum += double{plane.x[i]};
  return sum / plane.mn;
}

// The picture that a line makes of another.
Picture Made(const test::ScratchFolder& folder, std::string line, const std::string& from, const std::string& to) {
  line.replace(line.find("IN"), 2, from).replace(line.find("OUT"), 3, to);
  const test::Outcome outcome = KitIn(folder, line);
  CAPTURE(line);
  CAPTURE(outcome.errors);
  REQUIRE(outcome.exitCode == 0);
  Picture made = ReadPicture(folder / to);
  std::filesystem::remove(folder / to);
  return made;
}

}  // namespace

TEST_CASE("what is transparent has no say in the colour of what is seen") {
  test::ScratchFolder folder;
  REQUIRE(KitIn(folder, "new-net net.net --start lanczos").exitCode == 0);
  for (const int32_t channels : {2, 4}) {
    const int32_t bits = channels == 2 ? 16 : 8;
    WritePicture(folder / "white.png", Disc(channels, bits, 255, 0), test::Over());
    WritePicture(folder / "dark.png", Disc(channels, bits, 30, 255), test::Over());
    for (const char* line : kScaling) {
      CAPTURE(line);
      const Picture white = Made(folder, line, "white.png", "out.png"),
                    dark = Made(folder, line, "dark.png", "out.png");
      CHECK((white.channels == channels && white.bits == bits));
      // As far as it shows; restoration is not linear, so that a colour's edge is not quite alpha's.
      float worst = 0;
      for (int32_t k = 0; k < white.Colours(); ++k)
        for (int32_t i = 0; i < white.Alpha().mn; ++i)
          worst = std::max({worst, (255 - white.plane[k].x[i]) * white.Alpha().x[i] / 255,
                            std::abs(dark.plane[k].x[i] - 30) * dark.Alpha().x[i] / 255});
      CHECK(worst <= (std::string(line).starts_with("restore") ? 3 : 1));
      const auto [least, most] = std::minmax_element(white.Alpha().x, white.Alpha().x + white.Alpha().mn);
      CHECK((*least == 0 && *most == 255));
    }
  }
}

TEST_CASE("an opaque picture comes out as the one without alpha") {
  test::ScratchFolder folder;
  REQUIRE(KitIn(folder, "testcard card.png --size 60x53").exitCode == 0);
  REQUIRE(KitIn(folder, "new-net net.net --start lanczos").exitCode == 0);
  Picture opaque = ReadPicture(folder / "card.png");
  opaque.channels = 4;
  opaque.plane[3].dim(60, 53);
  opaque.plane[3].fill(255);
  WritePicture(folder / "opaque.png", opaque, {});
  for (const char* line : kScaling) {
    CAPTURE(line);
    const std::string deep = std::string(line) + " --bits 16";
    const Picture without = Made(folder, deep, "card.png", "out.png"),
                  with = Made(folder, deep, "opaque.png", "out.png");
    for (int32_t k = 0; k < 3; ++k)
      CHECK(std::equal(with.plane[k].x, with.plane[k].x + with.plane[k].mn, without.plane[k].x));
    CHECK(std::all_of(with.Alpha().x, with.Alpha().x + with.Alpha().mn, [](float a) { return a == 255; }));
  }
}

TEST_CASE("colours come back from what scaling left of them and of alpha") {
  // Networks leave a little more or less than 255 of it, and there nothing is divided.
  const float alpha[] = {255.2f, 254.8f, 254, 51, 0.6f, 0.4f, 0.001f, -3, 270, 51},
              colour[] = {300, -7, 127, 40, 90, 30, 30, 2, 135, 80};
  for (const int32_t bits : {8, 16, 32}) {
    Picture picture(10, 1, 2, bits);
    std::copy_n(colour, 10, picture.plane[0].x);
    std::copy_n(alpha, 10, picture.Alpha().x);
    Unpremultiply(picture);
    const float divided[] = {
        300, -7, 127.5f, 200, 255, bits == 8 ? 0.0f : 255.0f, 0, 0, 127.5f, bits == 32 ? 400.0f : 255.0f};
    const float clamped[] = {255, 255, 254, 51, 0.6f, 0.4f, 0.001f, 0, 255, 51};
    for (int i = 0; i < 10; ++i) {
      CHECK(picture.plane[0].x[i] == doctest::Approx(divided[i]));
      CHECK(picture.Alpha().x[i] == clamped[i]);
    }
  }
}

namespace {

// A PNG of shading from dark to light, of 8 bits or 16 a sample or fewer; `clear` marks one value as transparent.
void WriteShadedPng(const std::string& path, int colourType, int depth, bool clear, bool grey = false) {
  constexpr int kWidth = 32, kHeight = 24;
  FILE* file = std::fopen(path.c_str(), "wb");
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file);
  png_set_IHDR(png, info, kWidth, kHeight, depth, colourType, 0, 0, 0);
  const int levels = 1 << std::min(depth, 8);
  std::vector<png_color> palette;
  for (int i = 0; i < levels; ++i) {
    const auto v = static_cast<png_byte>(255 * i / (levels - 1));
    palette.push_back({v, v, grey ? v : static_cast<png_byte>(255 - v)});
  }
  if (colourType == PNG_COLOR_TYPE_PALETTE) png_set_PLTE(png, info, palette.data(), levels);
  const png_byte alpha[] = {0, 128};
  png_color_16 value = {};
  if (clear) png_set_tRNS(png, info, alpha, 2, &value);
  png_write_info(png, info);
  png_set_packing(png);
  const int channels = png_get_channels(png, info);
  for (int r = 0; r < kHeight; ++r) {
    std::vector<png_byte> row;
    for (int x = 0; x < kWidth; ++x)
      for (int k = 0; k < channels; ++k) {
        const int level = (levels - 1) * x / (kWidth - 1);
        row.push_back(static_cast<png_byte>(level));
        if (depth == 16) row.push_back(static_cast<png_byte>(level == 0 ? 0 : 16 * r / kHeight));
      }
    png_write_row(png, row.data());
  }
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  std::fclose(file);
}

void WriteShadedTiff(const std::string& path, int photometric, int depth, int channels) {
  TIFF* tiff = TIFFOpen(path.c_str(), "w");
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 32);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 24);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, depth);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, channels);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  const uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
  if (channels == 2) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &alpha);
  const int levels = 1 << depth;
  std::vector<uint16_t> red(levels), blue(levels);
  for (int i = 0; i < levels; ++i)
    red[i] = static_cast<uint16_t>(65535 * i / (levels - 1)), blue[i] = static_cast<uint16_t>(65535 - red[i]);
  if (photometric == PHOTOMETRIC_PALETTE) TIFFSetField(tiff, TIFFTAG_COLORMAP, red.data(), red.data(), blue.data());
  std::vector<uint8_t> row(32 * channels * depth / 8);
  for (int x = 0; x < 32; ++x) {
    const int level = (levels - 1) * x / 31;
    for (int k = 0; k < channels; ++k) {
      const int value = k == 1                                  ? (x == 31 ? 128 : 255)
                        : photometric == PHOTOMETRIC_MINISWHITE ? levels - 1 - level
                                                                : level,
                bit = (x * channels + k) * depth;
      row[bit / 8] = static_cast<uint8_t>(row[bit / 8] | value << (8 - depth - bit % 8));
    }
  }
  for (int r = 0; r < 24; ++r) TIFFWriteScanline(tiff, std::vector<uint8_t>(row).data(), r, 0);
  TIFFClose(tiff);
}

}  // namespace

TEST_CASE("every kind of picture keeps what it is through every command, as far as the format can hold it") {
  test::ScratchFolder folder;
  REQUIRE(KitIn(folder, "new-net net.net --start lanczos").exitCode == 0);
  struct Kind {
    std::string name;
    int32_t levels, channels, bits;
    bool palette, clear;
  };
  std::vector<Kind> kinds;
  const auto add = [&](const std::string& what, int depth, int32_t channels, bool palette, bool clear) {
    kinds.push_back({what + std::to_string(depth) + (clear ? "-clear.png" : ".png"), 1 << std::min(depth, 8), channels,
                     depth == 16 ? 16 : 8, palette, clear});
    return folder / kinds.back().name;
  };
  for (const int depth : {1, 2, 4, 8, 16})
    for (const bool clear : {false, true}) {
      WriteShadedPng(add("grey", depth, clear ? 2 : 1, false, clear), PNG_COLOR_TYPE_GRAY, depth, clear);
      if (depth <= 8)
        WriteShadedPng(add("palette", depth, clear ? 4 : 3, true, clear), PNG_COLOR_TYPE_PALETTE, depth, clear);
      // A palette without a colour is grey.
      if (depth == 4 || depth == 8)
        WriteShadedPng(add("grey-palette", depth, clear ? 2 : 1, false, clear), PNG_COLOR_TYPE_PALETTE, depth, clear,
                       true);
      if (depth >= 8) WriteShadedPng(add("rgb", depth, clear ? 4 : 3, false, clear), PNG_COLOR_TYPE_RGB, depth, clear);
    }
  for (const int depth : {1, 2, 4, 8}) {
    WriteShadedTiff(add("tiff-grey", depth, 1, false, false), PHOTOMETRIC_MINISBLACK, depth, 1);
    WriteShadedTiff(add("tiff-white", depth, 1, false, false), PHOTOMETRIC_MINISWHITE, depth, 1);
    WriteShadedTiff(add("tiff-palette", depth, 3, true, false), PHOTOMETRIC_PALETTE, depth, 1);
    if (depth == 8) WriteShadedTiff(add("tiff-alpha", depth, 2, false, false), PHOTOMETRIC_MINISBLACK, depth, 2);
  }
  const char* const lines[] = {"export IN OUT",
                               "enlarge IN OUT --method lanczos",
                               "enlarge IN OUT --net net.net --average",
                               "restore IN OUT --factor 1",
                               "denoise IN OUT",
                               "shrink IN OUT",
                               "noise IN OUT --sigma 1"};
  const char* const targets[] = {"out.png", "out.tif", "out.jpg", test::kHasWebp ? "out.webp" : "out.png"};
  std::set<std::pair<int32_t, int32_t>> scaled;  // channels and bits, which are all that commands see
  for (const Kind& kind : kinds) {
    CAPTURE(kind.name);
    const Picture picture = ReadPicture(folder / kind.name);
    CHECK((picture.channels == kind.channels && picture.bits == kind.bits));
    for (int32_t x = 0; x < 32; ++x) {
      const int32_t level = (kind.levels - 1) * x / 31;
      const float value = 255.0f * static_cast<float>(level) / static_cast<float>(kind.levels - 1);
      CHECK(std::abs(picture.Colour(0).z[3][x] - value) < 1.01);
      CHECK(std::abs(picture.Colour(2).z[3][x] - (kind.palette ? 255 - value : value)) < 1.01);
      if (picture.HasAlpha())
        CHECK(picture.Alpha().z[3][x] == (!kind.clear ? (x == 31 ? 128 : 255)
                                          : level > int(kind.name.find("palette") != std::string::npos) ? 255
                                          : level == 1                                                  ? 128
                                                                                                        : 0));
    }
    const bool all = scaled.insert({kind.channels, kind.bits}).second;
    for (size_t i = 0; i < (all ? std::size(lines) : 0); ++i)
      for (size_t j = 0; j < std::size(targets); ++j) {
        if (i > 0 && j != i % 4) continue;
        CAPTURE(lines[i]);
        CAPTURE(targets[j]);
        const Picture made = Made(folder, lines[i], kind.name, targets[j]);
        const bool jpeg = j == 2, webp = j == 3 && test::kHasWebp;
        // Where a format has no place for what is transparent, it is white.
        if (i == 0 && jpeg && kind.clear) CHECK(made.plane[0].z[3][0] > 235);
        CHECK(made.bits == (jpeg || webp ? 8 : kind.bits));
        CHECK(made.channels == (jpeg                         ? (kind.channels <= 2 ? 1 : 3)
                                : webp && kind.channels <= 2 ? kind.channels + 2
                                                             : kind.channels));
        for (int k = 0; !kind.clear && k < 3; ++k)
          CHECK(std::abs(MeanOf(made.Colour(k)) - MeanOf(picture.Colour(k))) < 5);
      }
  }
}

TEST_CASE("dithering keeps in the mean of a few pixels what eight bits cannot hold") {
  test::ScratchFolder folder;
  Picture shade(128, 96, 3, 16);
  for (int k = 0; k < 3; ++k)
    for (int32_t r = 0; r < 96; ++r)
      for (int32_t x = 0; x < 128; ++x) shade.plane[k].z[r][x] = x < 64 ? 100 + static_cast<float>(x) / 64 : 200.0f;
  WritePicture(folder / "deep.png", shade, {});
  shade.channels = 1;
  WritePicture(folder / "grey.png", shade, {});
  for (const char* name : {"deep.png", "grey.png"}) {
    const Picture made = Made(folder, "export IN OUT --bits 8 --dither", name, "out.png");
    CHECK(made.bits == 8);
    for (int32_t y = 0; y < 96; y += 8)
      for (int32_t x = 0; x < 128; x += 8) {
        double sum = 0, wanted = 0;
        for (int32_t i = 0; i < 64; ++i) {
          const int32_t r = y + i / 8, c = x + i % 8;
          sum += double{made.plane[0].z[r][c]};
          wanted += double{shade.plane[0].z[r][c]};
          // Equal colours stay equal, and whole values what they are.
          CHECK((made.Colour(1).z[r][c] == made.plane[0].z[r][c] && (c < 64 || made.plane[0].z[r][c] == 200)));
        }
        CHECK(std::abs(sum - wanted) / 64 < 0.06);
      }
  }
  // The same wherever the work is cut.
  WriteChoice choice;
  choice.bits = 8;
  choice.dither = true;
  WritePicture(folder / "whole.png", shade, choice);
  const PictureSource rows = HeldPicture(shade);
  const PictureSink parts = CreatePicture(folder / "parts.png", shade.Shape(), choice);
  for (int i = 0; i < 2; ++i) {
    Picture part(128, 48, 1, 16);
    rows.read(part, 0, 48);
    parts.write(std::move(part));
  }
  parts.finish();
  CHECK(test::ReadBytes(folder / "whole.png") == test::ReadBytes(folder / "parts.png"));
  REQUIRE(KitIn(folder, "new-net net.net --start lanczos").exitCode == 0);
  const auto bytes = [&](const std::string& more) {
    REQUIRE(
        KitIn(folder, "enlarge grey.png " + more + ".png --dither --bits 8 --net net.net --threads " + more).exitCode ==
        0);
    return test::ReadBytes(folder / (more + ".png"));
  };
  CHECK(bytes("1") == bytes("3"));
  for (const char* line : {"export deep.png o.png --dither", "export grey.png o.tif --bits 16 --dither",
                           "enlarge deep.png o.fdib --method nearest --dither"}) {
    CHECK(KitIn(folder, line).exitCode == 2);
    CHECK(!std::filesystem::exists(folder / "o.png"));
  }
}
