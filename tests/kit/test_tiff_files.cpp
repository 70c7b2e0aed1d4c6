// TIFF as others write it: kinds of samples, layouts, pages.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <doctest/doctest.h>
#include <functional>
#include <tiffio.h>

#include "kit/failure.h"
#include "kit/formats/byte_stream.h"
#include "kit/formats/codec.h"
#include "kit/metadata/metadata.h"
#include "kit/picture_patterns.h"
#include "support/scratch.h"

using namespace norv;
using test::Pattern;
using test::Refusal;
using test::Shape;

namespace {

// A file of one or several pictures, whose tags `fill` sets and whose rows it writes.
Bytes MakeTiff(const std::function<void(TIFF*)>& fill, const char* mode = "w") {
  test::ScratchFolder folder;
  const std::string name = folder / "t.tif";
  TIFF* tiff = TIFFOpen(name.c_str(), mode);
  fill(tiff);
  TIFFClose(tiff);
  const std::string text = test::ReadBytes(name);
  return {text.begin(), text.end()};
}

void SetTags(TIFF* tiff, int width, int height, int channels, int bits, int photometric) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, channels);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric);
}

template <typename T>
Bytes BytesOf(std::initializer_list<T> values) {
  Bytes bytes(values.size() * sizeof(T));
  if (!bytes.empty()) std::memcpy(bytes.data(), std::data(values), bytes.size());
  return bytes;
}

}  // namespace

TEST_CASE("TIFF samples of any precision are unfolded") {
  constexpr int kUnsigned = SAMPLEFORMAT_UINT, kSigned = SAMPLEFORMAT_INT, kFloat = SAMPLEFORMAT_IEEEFP;
  struct Row {
    int bits, kind, photometric;
    Bytes row;  // of three grey pixels
    int32_t bitsNow;
    Bytes now;
  };
  const Row rows[] = {
      {1, kUnsigned, PHOTOMETRIC_MINISBLACK, {0xA0}, 8, {255, 0, 255}},
      {1, kUnsigned, PHOTOMETRIC_MINISWHITE, {0xA0}, 8, {0, 255, 0}},
      {2, kUnsigned, PHOTOMETRIC_MINISBLACK, {0x1B << 2}, 8, {85, 170, 255}},
      {4, kUnsigned, PHOTOMETRIC_MINISBLACK, {0x01, 0xF0}, 8, {0, 17, 255}},
      {8, kSigned, PHOTOMETRIC_MINISBLACK, {0x80, 0, 0x7F}, 8, {0, 128, 255}},
      {12,
       kUnsigned,
       PHOTOMETRIC_MINISBLACK,
       {0x00, 0x1F, 0xFF, 0x80, 0x00},
       16,
       BytesOf<uint16_t>({16, 65535, 32776})},
      {24,
       kUnsigned,
       PHOTOMETRIC_MINISBLACK,
       {0, 0, 0, 255, 255, 255, 0, 0, 128},
       32,
       BytesOf<float>({0, 1, 0x800000 / 16777215.0f})},
      {32, kUnsigned, PHOTOMETRIC_MINISBLACK, BytesOf<uint32_t>({0, UINT32_MAX, 0x40000000}), 32,
       BytesOf<float>({0, 1, 0.25f})},
      {16, kFloat, PHOTOMETRIC_MINISBLACK, BytesOf<uint16_t>({0x3C00, 0xC000, 0x0001}), 32,
       BytesOf<float>({1, -2, std::ldexp(1.0f, -24)})},
      {24, kFloat, PHOTOMETRIC_MINISBLACK, {0, 0, 0x3F, 0, 0x80, 0xC0, 0, 0, 0}, 32, BytesOf<float>({1, -3, 0})},
      {32, kFloat, PHOTOMETRIC_MINISWHITE, BytesOf<float>({0.25f, 3, -1}), 32, BytesOf<float>({0.75f, -2, 2})},
      {64, kFloat, PHOTOMETRIC_MINISBLACK, BytesOf<double>({0.5, 1e9, -0.125}), 32,
       BytesOf<float>({0.5f, 1e9f, -0.125f})},
  };
  for (const Row& row : rows)
    for (const char* mode : {"wl", "wb"}) {  // the library swaps what it writes
      INFO(row.bits, " bits of kind ", row.kind, " ", mode);
      const Bytes file = MakeTiff(
          [&](TIFF* tiff) {
            SetTags(tiff, 3, 1, 1, row.bits, row.photometric);
            TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, row.kind);
            Bytes copy = row.row;
            TIFFWriteScanline(tiff, copy.data(), 0, 0);
          },
          mode);
      const Samples samples = kTiff.Decode(file);
      CHECK(Shape(samples) == std::array<int32_t, 4>{3, 1, 1, row.bitsNow});
      CHECK(samples.bytes == row.now);
    }
}

TEST_CASE("TIFF tiles and separate planes are read as what they show") {
  const Samples samples = Pattern(41, 35, 3, 16);
  // A part of one channel's plane, from (y, x) on.
  const auto cut = [&](uint32_t y, uint32_t x, uint16_t channel, uint32_t width, uint32_t height) {
    std::vector<uint16_t> part(width * height);
    for (uint32_t i = 0; i < part.size(); ++i)
      if (const uint32_t r = y + i / width, c = x + i % width; r < 35 && c < 41)
        std::memcpy(&part[i], samples.Row(static_cast<int32_t>(r)) + 6 * c + 2 * channel, 2);
    return part;
  };
  for (const bool tiled : {true, false}) {
    const Bytes file = MakeTiff([&](TIFF* tiff) {
      SetTags(tiff, 41, 35, 3, 16, PHOTOMETRIC_RGB);
      TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_SEPARATE);
      TIFFSetField(tiff, TIFFTAG_COMPRESSION, tiled ? COMPRESSION_NONE : COMPRESSION_LZW);
      TIFFSetField(tiff, tiled ? TIFFTAG_TILEWIDTH : TIFFTAG_ROWSPERSTRIP, tiled ? 16 : 8);
      if (tiled) TIFFSetField(tiff, TIFFTAG_TILELENGTH, 16);
      for (uint16_t channel = 0; channel < 3; ++channel)
        for (uint32_t y = 0; y < 35; y += tiled ? 16 : 1) {
          if (!tiled) TIFFWriteScanline(tiff, cut(y, 0, channel, 41, 1).data(), y, channel);
          for (uint32_t x = 0; tiled && x < 41; x += 16)
            TIFFWriteTile(tiff, cut(y, x, channel, 16, 16).data(), x, y, 0, channel);
        }
    });
    CHECK(kTiff.Decode(file).bytes == samples.bytes);
  }
}

TEST_CASE("TIFF palettes, multiplied alpha and extra samples are read as what they show") {
  uint16_t red[4] = {0, 0x1200, 0x3400, 0xFFFF}, green[4] = {0, 0x5600, 0x3400, 0xFFFF};
  for (const bool grey : {true, false}) {
    const Bytes palette = MakeTiff([&](TIFF* tiff) {
      SetTags(tiff, 4, 1, 1, 2, PHOTOMETRIC_PALETTE);
      TIFFSetField(tiff, TIFFTAG_COLORMAP, red, grey ? red : green, red);
      uint8_t row[] = {0x1B};
      TIFFWriteScanline(tiff, row, 0, 0);
    });
    CHECK(kTiff.Decode(palette).bytes ==
          (grey ? Bytes{0, 0x12, 0x34, 255} : Bytes{0, 0, 0, 0x12, 0x56, 0x12, 0x34, 0x34, 0x34, 255, 255, 255}));
  }
  const Bytes multiplied = MakeTiff([&](TIFF* tiff) {
    SetTags(tiff, 1, 1, 2, 8, PHOTOMETRIC_MINISBLACK);
    const uint16_t kind = EXTRASAMPLE_ASSOCALPHA;
    TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
    uint8_t row[] = {50, 100};
    TIFFWriteScanline(tiff, row, 0, 0);
  });
  CHECK(kTiff.Decode(multiplied).bytes == Bytes{128, 100});  // 50 / (100 / 255), rounded
  // Of two extra samples the second is alpha.
  const Bytes extra = MakeTiff([&](TIFF* tiff) {
    SetTags(tiff, 1, 1, 5, 8, PHOTOMETRIC_RGB);
    const uint16_t kinds[] = {EXTRASAMPLE_UNSPECIFIED, EXTRASAMPLE_UNASSALPHA};
    TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 2, kinds);
    uint8_t row[] = {1, 2, 3, 4, 5};
    TIFFWriteScanline(tiff, row, 0, 0);
  });
  CHECK(kTiff.Decode(extra).bytes == Bytes{1, 2, 3, 5});
}

TEST_CASE("a page of a TIFF is taken by its number, small versions left out") {
  const Bytes file = MakeTiff([](TIFF* tiff) {
    for (uint8_t page = 1; page <= 4; ++page) {
      SetTags(tiff, page, 1, 1, 8, PHOTOMETRIC_MINISBLACK);
      TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, page == 2 ? FILETYPE_REDUCEDIMAGE : FILETYPE_PAGE);
      Bytes row(page, page);
      TIFFWriteScanline(tiff, row.data(), 0, 0);
      TIFFWriteDirectory(tiff);
    }
  });
  const uint8_t first[] = {1, 1, 3, 4};
  for (int32_t page = 0; page <= 3; ++page) {
    const Samples samples = kTiff.Decode(file, {.page = page});
    CHECK(samples.pages == 3);
    CHECK(samples.bytes == Bytes(first[page], first[page]));
  }
  CHECK(Refusal(kTiff, file, {.page = 4}) == "TIFF: page 4 of a file of 3");
}

TEST_CASE("a TIFF that claims more than it can hold is refused") {
  const Bytes tile = MakeTiff([](TIFF* tiff) {
    SetTags(tiff, 16, 16, 3, 8, PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_TILEWIDTH, 16);
    TIFFSetField(tiff, TIFFTAG_TILELENGTH, 16);
    Bytes row(16 * 16 * 3);
    TIFFWriteTile(tiff, row.data(), 0, 0, 0, 0);
  });
  // Two tags of the directory: the sides of its tiles.
  Bytes claim = tile;
  for (const uint8_t tag : {uint8_t{TIFFTAG_TILEWIDTH & 255}, uint8_t{TIFFTAG_TILELENGTH & 255}}) {
    const uint8_t mark[] = {tag, 1, 3, 0, 1, 0, 0, 0, 16};
    const auto place = std::search(claim.begin(), claim.end(), std::begin(mark), std::end(mark));
    REQUIRE(place != claim.end());
    place[9] = 0x40;
  }
  CHECK(Refusal(kTiff, claim).find("cannot hold as many pixels") != std::string::npos);
}

TEST_CASE("rows of a TIFF without compression stand where they are foretold, whoever puts them there") {
  constexpr char kExif[] = "MM\0*\0\0\0\x08\0\x01\x01\x0F\0\x02\0\0\0\x04us\0\0\0\0\0";
  const EncodingChoice choice{.compression = "none"};
  for (const int32_t bits : {8, 16, 32})
    for (int32_t channels = 1; channels <= 4; ++channels) {
      Samples samples = Pattern(37, 500, channels, bits);
      Metadata metadata;
      metadata.exif.assign(kExif, kExif + sizeof kExif);
      if (channels % 2 == 0) samples.metadata = std::make_shared<const Metadata>(std::move(metadata));
      const Bytes whole = kTiff.Encode(samples, choice);
      INFO(bits, " bits, ", channels, " channels");
      CHECK(whole[0] == (samples.metadata ? 'M' : 'I'));
      CHECK(kTiff.Decode(whole).bytes == samples.bytes);
      // The last rows by somebody else.
      Bytes parts;
      const SampleSink sink = kTiff.create(ToMemory(parts), samples, choice);
      Samples first({samples.width, 123, channels, bits}), row({samples.width, 1, channels, bits});
      std::copy_n(samples.bytes.begin(), first.bytes.size(), first.bytes.begin());
      sink.write(first);
      sink.finish();
      const std::optional<RowPlaces> places = kTiff.places(samples, choice);
      REQUIRE(places);
      for (int32_t r = first.height; r < samples.height; ++r) {
        std::copy_n(samples.Row(r), row.bytes.size(), row.bytes.begin());
        for (size_t i = 0; places->swapped && i < row.bytes.size(); i += bits / 8)
          std::reverse(&row.bytes[i], &row.bytes[i] + bits / 8);
        std::copy(row.bytes.begin(), row.bytes.end(), &parts[places->first + r * row.bytes.size()]);
      }
      CHECK(parts == whole);
    }
  CHECK(!kTiff.places(Pattern(3, 3, 1, 8), {}));
}
