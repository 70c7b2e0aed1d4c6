// What is told of pictures: forms of files, cameras' fields, profiles, and texts that are no friends of terminals.
#include <doctest/doctest.h>

#include "kit/formats/codec.h"
#include "kit/look/exif_facts.h"
#include "kit/look/format_facts.h"
#include "kit/look/profile_facts.h"
#include "kit/look/safe_text.h"
#include "kit/metadata/exif.h"
#include "support/kit.h"

using namespace norv;

namespace {

std::string Word(uint32_t number) {
  return {static_cast<char>(number >> 24), static_cast<char>(number >> 16), static_cast<char>(number >> 8),
          static_cast<char>(number)};
}

// A profile whose only tag is its name, as version 2 has it or as version 4 in two languages.
Bytes Profile(bool v4) {
  const std::string old = "desc" + Word(0) + Word(5) + "Mine\0";
  const std::string ascii = v4 ? "mluc" + Word(0) + Word(2) + Word(12) + "deAT" + Word(4) + Word(40) + "enUS" +
                                     Word(6) + Word(44) + std::string("\0d\0e\0A\0\xE4\0b", 10)
                               : old + std::string(1, '\0');
  std::string icc = std::string(12, '\0') + "mntrRGB XYZ " + std::string(12, '\0') + "acsp";
  icc.resize(128);
  icc[8] = v4 ? 4 : 2;
  icc += Word(1) + "desc" + Word(144) + Word(static_cast<uint32_t>(ascii.size())) + ascii;
  return {icc.begin(), icc.end()};
}

Bytes CameraBlock(bool bigEndian) {
  ExifTree tree;
  tree.bigEndian = bigEndian;
  tree.image = {AsciiField(272, "Box 3"), AsciiField(315, "\x1b[31mred\nline"), NumberField(50000, 3, 7, bigEndian)};
  tree.exif = {RationalField(33434, 0.004, bigEndian), RationalField(33437, 2.8, bigEndian),
               NumberField(34855, 3, 400, bigEndian), AsciiField(36867, "2020:02:29 12:00:00"),
               NumberField(37383, 3, 5, bigEndian)};
  TiffField bias{37380, 10, Bytes(8)};  // -2/3
  PutNumber(&bias.value[0], 4, 0xFFFFFFFE, bigEndian);
  PutNumber(&bias.value[4], 4, 3, bigEndian);
  tree.exif.push_back(bias);
  const auto angle = [&](uint16_t tag, double degrees, double minutes, double seconds) {
    TiffField field{tag, kTypeRational, {}};
    for (const double part : {degrees, minutes, seconds})
      for (const uint8_t byte : RationalField(tag, part, bigEndian).value) field.value.push_back(byte);
    return field;
  };
  tree.gps = {AsciiField(1, "S"), angle(2, 33, 51, 36), AsciiField(3, "E"), angle(4, 151, 12, 0)};
  return ExifBlock(tree);
}

Bytes Encoded(const Codec& codec, int32_t channels, int32_t quality = 0) {
  Samples samples(PictureShape{40, 24, channels});
  for (size_t i = 0; i < samples.bytes.size(); ++i) samples.bytes[i] = static_cast<uint8_t>(i * 7);
  EncodingChoice choice;
  choice.quality = quality;
  return codec.Encode(samples, choice);
}

StoredForm FormOf(const char* format, const Bytes& bytes, int32_t quality = 0) {
  PictureShape shape{40, 24, 3};
  shape.jpegQuality = quality;
  return StoredFormOf(format, FromMemory(bytes), shape, 1);
}

// Where these bytes begin.
size_t Find(const Bytes& bytes, const std::string& part) { return std::string(bytes.begin(), bytes.end()).find(part); }

}  // namespace

TEST_CASE("texts are made safe for a terminal, and short") {
  const std::pair<std::string, std::string> kTexts[] = {
      {"plain \xC3\xA4\xE2\x82\xAC", "plain \xC3\xA4\xE2\x82\xAC"},
      {"a\nb\tc\x1b[2J\x7f", "a\\nb\\tc\\x1b[2J\\x7f"},
      {"back\\slash", "back\\\\slash"},
      {"\xC2\x9B"
       "31m",
       "\\x9b31m"},                               // a control of C1
      {"\xE2\x80\xAEgpj.exe", "\\u202egpj.exe"},  // text turned around
      {"\xF3\xA0\x80\x81", "\\U000e0001"},
      {"\xC3(\xFF\xED\xA0\x80", "\\xc3(\\xff\\xed\\xa0\\x80"},  // no UTF-8
      {std::string("a\0b", 3), "a\\x00b"}};
  for (const auto& [text, safe] : kTexts) CHECK(SafeText(text) == safe);
  CHECK(SafeText(std::string(300, 'x')) == std::string(200, 'x') + " ... (300 bytes)");
  CHECK(SafeText(std::string(200, 'x')) == std::string(200, 'x'));
}

TEST_CASE("a camera's fields stand under their names, in either byte order") {
  for (const bool bigEndian : {false, true}) {
    CAPTURE(bigEndian);
    Facts facts;
    AddExifFacts(CameraBlock(bigEndian), facts);
    const std::pair<const char*, const char*> kExpected[] = {{"EXIF Model", "Box 3"},
                                                             {"EXIF Artist", "\\x1b[31mred\\nline"},
                                                             {"EXIF field 50000", "7"},
                                                             {"EXIF ExposureTime", "1/250 s"},
                                                             {"EXIF FNumber", "f/2.8"},
                                                             {"EXIF ISOSpeedRatings", "400"},
                                                             {"EXIF DateTimeOriginal", "2020:02:29 12:00:00"},
                                                             {"EXIF MeteringMode", "pattern"},
                                                             {"EXIF ExposureBiasValue", "-0.666667 EV"},
                                                             {"EXIF GPSLatitude", "33 51 36"},
                                                             {"EXIF position", "-33.860000, 151.200000"}};
    for (const auto& row : kExpected) CHECK_MESSAGE(facts.Find(row.first) == row.second, row.first);
  }
}

TEST_CASE("a profile says its name, whichever version it is of") {
  for (const bool v4 : {false, true}) {
    Facts facts;
    AddProfileFacts(Profile(v4), facts);
    CHECK(facts.Find("colour profile") == (v4 ? "A\xC3\xA4"
                                                "b (194 bytes)"
                                              : "Mine (161 bytes)"));
    CHECK(facts.Find("profile colours") == "RGB");
    CHECK(facts.Find("profile kind") == (v4 ? "display, version 4.0" : "display, version 2.0"));
  }
}

TEST_CASE("how a picture stands in its file is read from the file's headers") {
  Bytes jpeg = Encoded(kJpeg, 3, 75);
  const size_t frame = Find(jpeg, std::string("\xFF\xC0\0\x11", 4));
  REQUIRE(frame != std::string::npos);
  struct Sampling {
    uint8_t factors;
    const char* name;
  };
  for (const auto& [factors, name] :
       {Sampling{0x11, "4:4:4 (none)"}, {0x22, "4:2:0"}, {0x21, "4:2:2"}, {0x12, "4:4:0"}, {0x41, "4:1:1"}}) {
    jpeg[frame + 11] = factors;
    CHECK(FormOf("JPEG", jpeg).facts.Find("subsampling") == name);
  }
  CHECK(FormOf("JPEG", jpeg).colour == "YCbCr");
  CHECK(FormOf("JPEG", jpeg).facts.Find("process") == "baseline, Huffman coding");
  jpeg[frame + 1] = 0xCA;
  CHECK(FormOf("JPEG", jpeg).facts.Find("process") == "progressive, arithmetic coding");
  for (const int32_t quality : {25, 50, 75, 92})
    CHECK(kJpeg.open(FromMemory(Encoded(kJpeg, 3, quality)), {}).shape.jpegQuality == quality);

  Bytes png = Encoded(kPng, 4);
  CHECK(FormOf("PNG", png).facts.Find("interlace") == "none");
  CHECK(FormOf("PNG", png).colour == "RGB and alpha");
  png[28] = 1;
  CHECK(FormOf("PNG", png).facts.Find("interlace") == "Adam7");

  const StoredForm tiff = FormOf("TIFF", Encoded(kTiff, 3));
  CHECK((tiff.colour == "RGB" && tiff.bits == 8));
  CHECK(tiff.facts.Find("compression") == "LZW");
  CHECK(tiff.facts.Find("byte order") == "little-endian");
  CHECK(FormOf("BMP", Encoded(kBmp, 3)).facts.Find("bits a pixel") == "24");
  CHECK(FormOf("PPM", Encoded(kPpm, 3)).facts.Find("largest value") == "255");
}

TEST_CASE("a BMP says pixels a metre, whatever the unit they came in") {
  Samples samples(PictureShape{40, 24, 3});
  auto metadata = std::make_shared<Metadata>();
  metadata->resolution = {300, 150, ResolutionUnit::inch};
  samples.metadata = metadata;
  const auto read = kBmp.open(FromMemory(kBmp.Encode(samples, {})), {}).shape.metadata->resolution;
  CHECK((read == Resolution{11811, 5906, ResolutionUnit::metre}));
}

TEST_CASE("files cut or damaged anywhere tell what is whole") {
  const std::pair<const char*, Bytes> kFiles[] = {{"PNG", Encoded(kPng, 4)},   {"JPEG", Encoded(kJpeg, 3, 30)},
                                                  {"TIFF", Encoded(kTiff, 3)}, {"BMP", Encoded(kBmp, 3)},
                                                  {"PPM", Encoded(kPpm, 3)},   {"EXIF", CameraBlock(true)},
                                                  {"ICC", Profile(true)}};
  for (const auto& file : kFiles) {
    const char* const format = file.first;
    const Bytes& whole = file.second;
    CAPTURE(format);
    size_t most = 0;
    const auto look = [&](const Bytes& bytes) {
      Facts facts = FormOf(format, bytes).facts;
      AddExifFacts(bytes, facts);
      AddProfileFacts(bytes, facts);
      for (const Fact& fact : facts.All()) most = std::max(most, fact.value.size());
    };
    for (size_t size = 0; size < std::min<size_t>(whole.size(), 400); ++size)
      look({whole.begin(), whole.begin() + size});
    for (size_t at = 0; at < std::min<size_t>(whole.size(), 400); ++at) {
      Bytes damaged = whole;
      damaged[at] ^= 0xFF;
      look(damaged);
    }
    CHECK(most < 2500);
  }
}
