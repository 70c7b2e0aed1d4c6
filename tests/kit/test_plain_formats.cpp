// The formats of our own: what is written stands byte for byte, what others write is unfolded.
#include <cstring>
#include <doctest/doctest.h>
#include <initializer_list>

#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "kit/picture_patterns.h"

using namespace norv;
using test::Pattern;
using test::Refusal;
using test::Shape;

namespace {

Bytes Text(const std::string& text) { return {text.begin(), text.end()}; }

// Little-endian numbers, each of so many bytes.
struct Field {
  int64_t value;
  int bytes;
};

Bytes Packed(std::initializer_list<Field> fields, const Bytes& rest = {}) {
  Bytes bytes;
  for (const Field& field : fields)
    for (int i = 0; i < field.bytes; ++i) bytes.push_back(static_cast<uint8_t>(field.value >> (8 * i)));
  bytes.insert(bytes.end(), rest.begin(), rest.end());
  return bytes;
}

// A BMP of the usual header; `between` stands between that and the pixels.
Bytes Bmp(int32_t width, int32_t height, int bits, int compression, const Bytes& between, const Bytes& pixels,
          int headerSize = 40) {
  const int64_t offset = 14 + 40 + static_cast<int64_t>(between.size());
  Bytes bytes = Packed({{'B' | 'M' << 8, 2},
                        {0, 4},
                        {0, 4},
                        {offset, 4},
                        {headerSize, 4},
                        {width, 4},
                        {height, 4},
                        {1, 2},
                        {bits, 2},
                        {compression, 4},
                        {0, 4},
                        {0, 4},
                        {0, 4},
                        {0, 4},
                        {0, 4}},
                       between);
  bytes.insert(bytes.end(), pixels.begin(), pixels.end());
  return bytes;
}

}  // namespace

TEST_CASE("headers of numbers: words and bytes, comments, any largest value") {
  struct Row {
    const char* text;
    std::array<int32_t, 4> shape;  // width, height, channels, bits
    Bytes bytes;
  };
  const Row rows[] = {
      {"P1 # bits\n3 2\n1 0 1 010", {3, 2, 1, 8}, {0, 255, 0, 255, 0, 255}},
      {"P4\n3 2\n\xA0\x40", {3, 2, 1, 8}, {0, 255, 0, 255, 0, 255}},
      {"P2\n# a\n2 # b\n1\n4\n# c\n0 3", {2, 1, 1, 8}, {0, 191}},
      {"P5 2 1 4\n\1\4", {2, 1, 1, 8}, {64, 255}},
      {"P3\n1 1 255\n1\n2\n3\n", {1, 1, 3, 8}, {1, 2, 3}},
      {"P6\n1 1\n65535\n\1\2\3\4\5\6", {1, 1, 3, 16}, {2, 1, 4, 3, 6, 5}},
      {"P5 1 1 1023\n\3\xFF", {1, 1, 1, 16}, {255, 255}},
      {"P7\nWIDTH 1\nHEIGHT 1\n# c\nDEPTH 2\nMAXVAL 1\nTUPLTYPE BLACKANDWHITE_ALPHA\nENDHDR\n\1\1",
       {1, 1, 2, 8},
       {255, 255}},
      {"P7\nDEPTH 4\nMAXVAL 255\nWIDTH 1\nHEIGHT 1\nENDHDR\n\1\2\3\4", {1, 1, 4, 8}, {1, 2, 3, 4}},
  };
  for (const Row& row : rows) {
    CAPTURE(row.text);
    const Codec* codec = CodecOfContents(Text(row.text));
    REQUIRE(codec);
    const Samples samples = codec->Decode(Text(row.text));
    CHECK(Shape(samples) == row.shape);
    CHECK(samples.bytes == row.bytes);
  }
  // Too large a sample, too few of them, no sizes, tuples of four inks.
  for (const char* text :
       {"P2\n1 1\n4\n5", "P5\n1 1\n4\n\5", "P2\n2 1 9\n1", "P1\n2 1\n12", "P5\n0 1\n255\n", "P6\n1 1\n70000\n",
        "P5\n60000 30000\n255\n\1\2", "P2\n60000 30000\n255\n1 2", "P2 1 1 9 99999999999",
        "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE CMYK\nENDHDR\n1234"}) {
    CAPTURE(text);
    const Codec* codec = CodecOfContents(Text(text));
    REQUIRE(codec);
    CHECK(Refusal(*codec, Text(text)) != "");
  }
}

TEST_CASE("floats stand from the lowest row on, in either order of bytes, beyond black and white too") {
  const float values[] = {-0.5f, 2, 0.25f, 1};
  uint8_t little[16], big[16];
  std::memcpy(little, values, 16);
  for (int i = 0; i < 16; ++i) big[i] = little[i / 4 * 4 + 3 - i % 4];
  const std::string low = "Pf\n2 2\n-1.0\n", high = "Pf 2 2 1\n";
  const Bytes pixels[] = {Text(low + std::string(little, little + 16)), Text(high + std::string(big, big + 16))};
  const float upright[] = {0.25f, 1, -0.5f, 2};
  for (const Bytes& bytes : pixels) {
    const Samples samples = kPfm.Decode(bytes);
    CHECK(Shape(samples) == std::array<int32_t, 4>{2, 2, 1, 32});
    CHECK(std::memcmp(samples.bytes.data(), upright, 16) == 0);
    CHECK(kPfm.Encode(samples, {}) == pixels[0]);
  }
  for (const char* text : {"Pf\n2 2\n0\n", "PF 1 1 x ", "Pf 20000 20000 -1\nabcd"})
    CHECK(Refusal(kPfm, Text(text)) != "");
}

TEST_CASE("BMP: palettes plain and as runs, pixels by masks, old headers") {
  const Bytes palette = {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 10, 11, 12, 0};
  Bytes sixteen = palette;
  sixteen.resize(64);
  Bytes all = palette;
  all.resize(1024);
  const Bytes masks565 = Packed({{0xF800, 4}, {0x7E0, 4}, {0x1F, 4}});
  const Bytes masks4 = Packed({{0xF00, 4}, {0xF0, 4}, {0xF, 4}, {0xF000, 4}});
  const Bytes masksDeep = Packed({{0x3FF00000, 4}, {0xFFC00, 4}, {0x3FF, 4}});
  Bytes old = Packed({{'B' | 'M' << 8, 2}, {0, 4}, {0, 4}, {32, 4}, {12, 4}, {2, 2}, {1, 2}, {1, 2}, {1, 2}},
                     {0, 0, 0, 255, 255, 255, 0x40, 0, 0, 0});
  struct Row {
    const char* what;
    Bytes file;
    std::array<int32_t, 4> shape;
    Bytes bytes;
  };
  const Row rows[] = {
      {"one bit of the oldest header", old, {2, 1, 1, 8}, {0, 255}},
      {"four bits", Bmp(3, 1, 4, 0, sixteen, {0x12, 0x30, 0, 0}), {3, 1, 3, 8}, {6, 5, 4, 9, 8, 7, 12, 11, 10}},
      {"top-down", Bmp(1, -2, 8, 0, all, {1, 0, 0, 0, 2, 0, 0, 0}), {1, 2, 3, 8}, {6, 5, 4, 9, 8, 7}},
      {"without what fills the last row up", Bmp(1, 2, 8, 0, all, {1, 0, 0, 0, 2}), {1, 2, 3, 8}, {9, 8, 7, 6, 5, 4}},
      // Two of index 1, a leap of one up and one left out, three given, the end.
      {"runs of bytes",
       Bmp(4, 2, 8, 1, all, {2, 1, 0, 2, 0, 1, 1, 2, 0, 0, 0, 1}),
       {4, 2, 3, 8},
       {3, 2, 1, 3, 2, 1, 9, 8, 7, 3, 2, 1, 6, 5, 4, 6, 5, 4, 3, 2, 1, 3, 2, 1}},
      {"runs of nibbles",
       Bmp(3, 2, 4, 2, sixteen, {3, 0x12, 0, 0, 0, 3, 0x21, 0x30, 0, 1}),
       {3, 2, 3, 8},
       {9, 8, 7, 6, 5, 4, 12, 11, 10, 6, 5, 4, 9, 8, 7, 6, 5, 4}},
      {"16 bits as they usually are", Bmp(1, 1, 16, 0, {}, Packed({{0x7C01, 2}, {0, 2}})), {1, 1, 3, 8}, {255, 0, 8}},
      {"16 bits by masks", Bmp(1, 1, 16, 3, masks565, Packed({{0xF820, 2}, {0, 2}})), {1, 1, 3, 8}, {255, 4, 0}},
      {"alpha by a mask", Bmp(1, 1, 16, 6, masks4, Packed({{0x8F01, 2}, {0, 2}})), {1, 1, 4, 8}, {255, 0, 17, 136}},
      {"ten bits", Bmp(1, 1, 32, 3, masksDeep, Packed({{0x3FF00001, 4}})), {1, 1, 3, 16}, {255, 255, 0, 0, 64, 0}},
      {"32 bits without alpha", Bmp(1, 1, 32, 0, {}, {1, 2, 3, 4}), {1, 1, 3, 8}, {3, 2, 1}},
  };
  for (const Row& row : rows) {
    CAPTURE(row.what);
    CHECK(CodecOfContents(row.file) == &kBmp);
    const Samples samples = kBmp.Decode(row.file);
    CHECK(Shape(samples) == row.shape);
    CHECK(samples.bytes == row.bytes);
  }
  const Bytes wrong[] = {
      Bmp(0, 1, 24, 0, {}, {}),     Bmp(30000, 30000, 24, 0, {}, {1, 2, 3}),  Bmp(60000, 30000, 8, 1, all, {0, 1}),
      Bmp(4, 2, 8, 1, all, {2, 1}), Bmp(2, 1, 8, 1, all, {2, 1, 0, 0, 2, 1}), Bmp(1, 1, 8, 4, all, {1, 0, 0, 0})};
  for (const Bytes& file : wrong) CHECK(Refusal(kBmp, file) != "");
  // What merely begins with its letters.
  CHECK(CodecOfContents(Text("BM, of 27 letters and many more, is no picture")) == nullptr);
}

TEST_CASE("a format for grey or for colours alone takes the other as well as it can") {
  Samples colours({1, 1, 3, 8}), grey({1, 1, 1, 16});
  colours.bytes = {200, 100, 50};
  grey.bytes = {2, 1};
  CHECK(kPgm.Encode(colours, {}) == Text("P5\n1 1\n255\n\x7C"));
  CHECK(kPpm.Encode(grey, {}) == Text("P6\n1 1\n65535\n\1\2\1\2\1\2"));
}
