// What pictures carry beside their pixels, through every format and between them, and hostile blocks.
#include <algorithm>
#include <cstring>
#include <doctest/doctest.h>
#include <utility>

#include "kit/formats/codec.h"
#include "kit/formats/tiff/tiff_metadata.h"
#include "kit/look/picture_facts.h"
#include "kit/metadata/carry.h"
#include "kit/metadata/containers.h"
#include "kit/metadata/exif.h"
#include "kit/metadata/image_resources.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/picture_file.h"
#include "support/captured_output.h"

using namespace norv;

namespace {

Bytes BytesOf(const std::string& text) { return {text.begin(), text.end()}; }
std::string TextOf(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

// Numbers one behind the other in a byte order, and a directory of fields whose values all fit into the entries or lie
// where the number says.
struct Writer {
  bool bigEndian;
  std::string bytes{};

  Writer& Put(size_t size, uint64_t number) {
    for (size_t i = 0; i < size; ++i) bytes += static_cast<char>(number >> 8 * (bigEndian ? size - 1 - i : i));
    return *this;
  }
  Writer& Entry(uint16_t tag, uint16_t type, uint32_t count, uint32_t value) {
    Put(2, tag).Put(2, type).Put(4, count);
    return type == 3 && count == 1 ? Put(2, value).Put(2, 0) : Put(4, value);
  }
  Writer& Text(const std::string& text) {
    bytes += text;
    return *this;
  }
};

// A camera's block: a first directory that says orientation 6, one of EXIF's own with sizes, a fraction and a maker's
// note, one of GPS, and a thumbnail.
Bytes CameraBlock(bool bigEndian) {
  Writer block{bigEndian};
  block.Text(bigEndian ? "MM" : "II").Put(2, 42).Put(4, 8);
  block.Put(2, 5).Entry(0x010F, 2, 6, 200).Entry(0x0112, 3, 1, 6).Entry(0x011A, 5, 1, 192).Entry(0x8769, 4, 1, 74);
  block.Entry(0x8825, 4, 1, 140).Put(4, 160);  // and the directory of the thumbnail
  block.Put(2, 5).Entry(0x829A, 5, 1, 208).Entry(0x9201, 10, 1, 224).Entry(0x927C, 7, 7, 216);
  block.Entry(0xA002, 3, 1, 8).Entry(0xA003, 4, 1, 6).Put(4, 0);
  block.Put(2, 1).Entry(0x0001, 2, 2, bigEndian ? 0x4E000000 : 0x4E).Put(4, 0).Put(2, 0);
  block.Put(2, 2).Entry(0x0201, 4, 1, 232).Entry(0x0202, 4, 1, 6).Put(4, 0).Put(2, 0);
  block.Put(4, 300).Put(4, 1).Text(std::string("Maker\0\0\0", 8)).Put(4, 1).Put(4, 250);
  block.Text(std::string("\x01\0NOTE!\0", 8))
      .Put(4, 0xFFFFFFFB)
      .Put(4, 2)
      .Text(
          "\xFF\xD8"
          "JP\xFF\xD9");
  REQUIRE(block.bytes.size() == 238);
  return BytesOf(block.bytes);
}

// The value of a field in the directory that the tags before it point at; nothing where there is none.
Bytes FieldOf(const Bytes& exif, std::initializer_list<uint16_t> path) {
  if (exif.size() < 8) return {};
  const bool big = exif[0] == 'M';
  const auto number = [&](size_t at, size_t size) {
    uint64_t value = 0;
    for (size_t i = 0; i < size; ++i) value = value << 8 | exif.at(at + (big ? i : size - 1 - i));
    return static_cast<size_t>(value);
  };
  constexpr size_t kSizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};
  size_t directory = number(4, 4);
  Bytes value;
  for (const uint16_t tag : path) {
    value.clear();
    for (size_t i = 0, at = directory + 2; i < number(directory, 2); ++i, at += 12) {
      if (number(at, 2) != tag) continue;
      const size_t size = kSizes[number(at + 2, 2)] * number(at + 4, 4), from = size <= 4 ? at + 8 : number(at + 8, 4);
      value.assign(exif.begin() + static_cast<ptrdiff_t>(from), exif.begin() + static_cast<ptrdiff_t>(from + size));
      directory = number(at + 8, 4);
      break;
    }
    if (value.empty()) return {};
  }
  return value;
}

size_t NumberOf(const Bytes& exif, std::initializer_list<uint16_t> path) {
  const Bytes value = FieldOf(exif, path);
  size_t number = 0;
  for (size_t i = 0; i < value.size(); ++i) number = number << 8 | value[exif[0] == 'M' ? i : value.size() - 1 - i];
  return number;
}

const std::string kPacket =
    "<x:xmpmeta><rdf:RDF><rdf:Description tiff:Orientation=\"6\" exif:PixelXDimension='8'><tiff:ImageWidth>8"
    "</tiff:ImageWidth><xmp:Thumbnails>old</xmp:Thumbnails><dc:title>T\xC3\xB6</dc:title></rdf:Description></rdf:RDF>"
    "</x:xmpmeta>";

// Everything that there is, the profile longer than two of JPEG's segments.
Metadata Everything(bool bigEndian) {
  Metadata all;
  all.icc.resize(150001);
  for (size_t i = 0; i < all.icc.size(); ++i) all.icc[i] = static_cast<uint8_t>(i * i / 7);
  std::memcpy(&all.icc[16], "RGB ", 4);
  all.exif = CameraBlock(bigEndian);
  all.xmp = BytesOf(kPacket);
  all.iptc = BytesOf(std::string("\x1C\x02\x19\0\x03key", 8));
  all.resources = BytesOf(std::string("8BIM\x04\x0A\0\0\0\0\0\1\1\0", 14));
  all.text = {{"Comment", "one\ntwo", true}, {"Title", "T\xC3\xB6", true}, {"Author", "\xE2\x82\xAC"}};
  all.resolution = {300, 300, ResolutionUnit::inch};
  all.orientation = 6;
  return all;
}

// A picture of 8 x 6 in this format, which carries what the format has a place for.
void WriteSource(const std::string& path, const Codec& codec, const Metadata& metadata) {
  Samples samples({8, 6, 3});
  samples.metadata = std::make_shared<const Metadata>(metadata);
  const Bytes bytes = codec.Encode(samples, {});
  test::WriteBytes(path, {bytes.begin(), bytes.end()});
}

// What a picture of 16 x 12 carries when it is read from one file and written to another.
Metadata Passed(const std::string& from, const std::string& to, const WriteChoice& choice = {}) {
  Picture large(16, 12, 3);
  for (matrix& plane : large.plane) plane.fill(100);
  large.metadata = ReadPicture(from).metadata;
  WritePicture(to, std::move(large), choice);
  const auto carried = ReadPicture(to).metadata;
  return carried ? *carried : Metadata();
}

std::vector<const Codec*> Carriers() {
  std::vector<const Codec*> carriers;
  for (const Codec* codec : Codecs())
    if (codec->carries & kCarriesExif) carriers.push_back(codec);
  return carriers;
}

}  // namespace

TEST_CASE("everything that a picture carries passes from every format to every other, put right") {
  const test::ScratchFolder folder;
  for (const bool bigEndian : {false, true})
    for (const Codec* from : Carriers())
      for (const Codec* to : Carriers()) {
        INFO(std::string(from->name), " to ", std::string(to->name), bigEndian ? ", MM" : ", II");
        const Metadata all = Everything(bigEndian);
        const std::string source = folder / "a." + from->extensions[0], target = folder / "b." + to->extensions[0];
        WriteSource(source, *from, all);
        CHECK(ReadPicture(source).Width() == 6);  // orientation 6: upright it stands
        const Metadata now = Passed(source, target);
        CHECK(now.icc == all.icc);
        CHECK(now.iptc == all.iptc);
        CHECK(now.resources == all.resources);
        const auto resolution = ResolutionOf(now);
        CHECK((resolution == all.resolution));
        CHECK(NumberOf(now.exif, {0x8769, 0xA002}) == 16);
        CHECK(NumberOf(now.exif, {0x8769, 0xA003}) == 12);
        CHECK(now.orientation <= 1);
        CHECK(ReadPicture(target).Width() == 16);
        CHECK(TextOf(FieldOf(now.exif, {0x010F})) == std::string("Maker\0", 6));
        for (const uint16_t tag : std::initializer_list<uint16_t>{0x829A, 0x927C, 0x9201})
          CHECK(FieldOf(now.exif, {0x8769, tag}) == FieldOf(all.exif, {0x8769, tag}));
        CHECK(TextOf(FieldOf(now.exif, {0x8825, 1})) == std::string("N\0", 2));
        CHECK(TextOf(now.exif).find("JP\xFF") == std::string::npos);
        CHECK(TextOf(now.xmp) ==
              "<x:xmpmeta><rdf:RDF><rdf:Description tiff:Orientation=\"1\" exif:PixelXDimension='16'><tiff:ImageWidth>"
              "16</tiff:ImageWidth><dc:title>T\xC3\xB6</dc:title></rdf:Description></rdf:RDF></x:xmpmeta>");
        if (from->carries & to->carries & kCarriesText) CHECK(now.text.size() == 3);
      }
}

TEST_CASE("stripped pictures carry their profile only") {
  const test::ScratchFolder folder;
  for (const Codec* codec : Carriers()) {
    WriteSource(folder / "a.png", kPng, Everything(true));
    WriteChoice choice;
    choice.encoding.strip = true;
    Metadata kept;
    kept.icc = Everything(true).icc;
    CHECK((Passed(folder / "a.png", folder / "b." + codec->extensions[0], choice) == kept));
  }
}

TEST_CASE("a block is put right whatever it says, and never grows") {
  for (const bool bigEndian : {false, true}) {
    const Bytes whole = CameraBlock(bigEndian);
    for (size_t length = 0; length < whole.size(); ++length)
      for (const int change : {0x00, 0x01, 0x80, 0xFF}) {
        Bytes cut(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length)), changed = whole;
        changed[length] ^= static_cast<uint8_t>(change);
        for (Bytes* block : {&cut, &changed}) {
          const size_t size = block->size();
          PutExifRight(*block, 70000, 12);
          CHECK(block->size() <= size);
          const auto structure = TiffStructure::Open(FromMemory(*block));
          if (structure) CHECK(ExifBlock(ReadExifTree(*structure, structure->First())).size() < 2 * whole.size());
        }
      }
    // 70000 does not fit into the 16 bits that the width had.
    Bytes right = whole;
    PutExifRight(right, 70000, 12);
    CHECK(NumberOf(right, {0x8769, 0xA002}) == 70000);
    CHECK(right.size() == whole.size() - 6);  // the thumbnail stood at its end
    AddToExif(right, [](bool big) { return TiffFields{AsciiField(0x0131, "soft"), NumberField(0x0112, 3, 5, big)}; });
    CHECK(TextOf(FieldOf(right, {0x0131})) == std::string("soft\0", 5));
    CHECK(NumberOf(right, {0x0112}) == 1);
    CHECK(FieldOf(right, {0x8769, 0x927C}) == FieldOf(whole, {0x8769, 0x927C}));
  }
  // Directories that point at themselves, and more entries than there are bytes.
  Writer loop{false};
  loop.Text("II").Put(2, 42).Put(4, 8).Put(2, 3).Entry(0x8769, 4, 1, 8).Entry(0x8825, 4, 1, 8).Entry(0x0112, 3, 1, 6);
  Bytes block = BytesOf(loop.Put(4, 8).bytes);
  PutExifRight(block, 1, 1);
  CHECK(ExifOrientation(block) == 1);
  block[9] = 0xFF;
  PutExifRight(block, 1, 1);
  CHECK(ReadExifTree(*TiffStructure::Open(FromMemory(block)), 8).damaged);
}

TEST_CASE("TIFF files of every form hold EXIF's directories, for the library too") {
  for (const char* mode : {"wml", "wmb", "wm8l", "wm8b"}) {
    INFO(std::string(mode));
    const Metadata all = Everything(std::strchr(mode, 'b') != nullptr);
    Bytes bytes;
    {
      TiffFile tiff({}, ToMemory(bytes), mode);
      for (const uint32_t tag : {TIFFTAG_IMAGEWIDTH, TIFFTAG_IMAGELENGTH, TIFFTAG_SAMPLESPERPIXEL}) tiff.Set(tag, 1);
      tiff.Set(TIFFTAG_BITSPERSAMPLE, 8);
      tiff.Set(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
      uint8_t sample = 77;
      TIFFWriteScanline(tiff.tiff, &sample, 0, 0);
      WriteLastDirectory(tiff, &all);
      TIFFClose(std::exchange(tiff.tiff, nullptr));
    }
    const Samples samples = kTiff.Decode(bytes);
    CHECK(samples.bytes == Bytes{77});
    CHECK((samples.metadata->icc == all.icc));
    for (const uint16_t tag : std::initializer_list<uint16_t>{0x829A, 0x9201, 0x927C})
      CHECK(FieldOf(samples.metadata->exif, {0x8769, tag}) == FieldOf(all.exif, {0x8769, tag}));
    TiffFile tiff(FromMemory(bytes), {}, "rm");
    const char* make = nullptr;
    uint64_t directory = 0;
    float time = 0;
    CHECK(TIFFGetField(tiff.tiff, TIFFTAG_MAKE, &make) == 1);
    CHECK(std::string(make) == "Maker");
    CHECK(TIFFGetField(tiff.tiff, TIFFTAG_EXIFIFD, &directory) == 1);
    CHECK(TIFFReadEXIFDirectory(tiff.tiff, directory) == 1);
    CHECK(TIFFGetField(tiff.tiff, EXIFTAG_EXPOSURETIME, &time) == 1);
    CHECK(time == 1 / 250.f);
  }
}

TEST_CASE("what a format cannot hold is left out with a word") {
  const test::ScratchFolder folder;
  Metadata much;
  much.exif = CameraBlock(true);
  much.exif.resize(70000);
  much.chromaticities = {0.3, 0.3, 0.7, 0.3, 0.2, 0.7, 0.1, 0.1};
  much.gamma = 1.0;
  WriteSource(folder / "a.png", kPng, much);
  const auto errorsOf = [&](const char* name) {
    return test::ErrorsOf([&] { Passed(folder / "a.png", folder / name); });
  };
  CHECK(errorsOf("b.png") == "");
  CHECK(errorsOf("b.jpg").find("the gamma, the chromaticities") != std::string::npos);
  CHECK(errorsOf("c.jpg").find("no place for EXIF of 700") != std::string::npos);
  CHECK(errorsOf("b.ppm").find("PPM has no place for EXIF, the gamma, the chromaticities") != std::string::npos);
  const Metadata tiff = Passed(folder / "a.png", folder / "b.tif");
  CHECK((tiff.chromaticities == much.chromaticities));
  CHECK((Passed(folder / "b.tif", folder / "d.png").chromaticities == much.chromaticities));
#ifdef NORV_WEBP
  // What WebP has no place for goes into EXIF, in a block of its own where there is none.
  much = {};
  much.text = {{"Author", "J\xC3\xB6", true}, {"Comment", "\xF0\x9D\x84\x9E\xC3\xB6"}};
  much.resolution = {300, 150, ResolutionUnit::metre};
  WriteSource(folder / "a.png", kPng, much);
  const Metadata elsewhere = Passed(folder / "a.png", folder / "b.webp");
  CHECK(TextOf(FieldOf(elsewhere.exif, {0x013B})) == std::string("J\xC3\xB6\0", 4));
  CHECK(TextOf(FieldOf(elsewhere.exif, {0x9C9C})) == std::string("\x34\xD8\x1E\xDD\xF6\0\0\0", 8));
  CHECK((ResolutionOf(elsewhere) == much.resolution));
  const Metadata back = Passed(folder / "b.webp", folder / "f.png");
  REQUIRE(back.text.size() == 1);
  CHECK((back.text[0] == much.text[1]));
#endif
  // Of sRGB nothing is lost, and a profile says more than both.
  much = {};
  much.gamma = 0.45455;
  much.intent = 1;
  WriteSource(folder / "a.png", kPng, much);
  CHECK(errorsOf("b.jpg") == "");
  CHECK((Passed(folder / "a.png", folder / "e.png").intent == 1));
  much.icc = Bytes(200, 'C');
  WriteSource(folder / "a.png", kPng, much);
  CHECK(errorsOf("b.jpg").find("does not fit") != std::string::npos);
  much = {};
  much.exif = BytesOf("not EXIF");
  WriteSource(folder / "a.jpg", kJpeg, much);
  CHECK(test::ErrorsOf([&] { Passed(folder / "a.jpg", folder / "b.jpg"); }).find("EXIF block is damaged") !=
        std::string::npos);
}

TEST_CASE("long packets are cut for JPEG and joined for others, marked as readers expect") {
  const test::ScratchFolder folder;
  const auto packet = [](const std::string& attributes, const std::string& inside) {
    return "<rdf:RDF><rdf:Description" + attributes + ">" + inside + "</rdf:Description></rdf:RDF>";
  };
  Metadata parts;
  parts.xmp = BytesOf(packet(" xmpNote:HasExtendedXMP=\"" + std::string(32, 'A') + "\"", "one"));
  parts.xmpMore = BytesOf(packet("", std::string(150000, '2')));
  WriteSource(folder / "a.jpg", kJpeg, parts);
  const Metadata same = Passed(folder / "a.jpg", folder / "b.jpg"), joined = Passed(folder / "a.jpg", folder / "b.png");
  CHECK(same.xmp == parts.xmp);
  CHECK(same.xmpMore == parts.xmpMore);
  const std::string all = TextOf(joined.xmp);
  CHECK(all.starts_with("<rdf:RDF><rdf:Description >one</rdf:Description><rdf:Description>22"));
  CHECK(all.ends_with("22</rdf:Description></rdf:RDF>"));
  CHECK(joined.xmpMore.empty());
  const Metadata again = Passed(folder / "b.png", folder / "c.jpg");
  CHECK(TextOf(again.xmpMore) == all);
  CHECK(TextOf(again.xmp).size() < 500);
}

TEST_CASE("texts and profiles of older programs' PNG files are read") {
  Metadata old;
  const std::string hex = "\nexif\n       14\n457869660000\n4d4d002a00000008\n";
  old.text = {{"Raw profile type exif", hex, true, true}, {"Raw profile type iptc", "\niptc\n 3\n1c0219", true}};
  old.text.push_back({"T\xC3\xAFtle", "\xE2\x82\xAC", false, true, "de", "T"});
  old.resolution = {72, 72, ResolutionUnit::inch};
  Bytes png(8);
  const Bytes chunks = PngChunks(old);
  png.insert(png.end(), chunks.begin(), chunks.end());
  const Metadata now = *ReadPngMetadata(FromMemory(png));
  CHECK(now.exif == Bytes{'M', 'M', 0, 42, 0, 0, 0, 8});
  CHECK(now.iptc == Bytes{0x1C, 2, 0x19});
  REQUIRE(now.text.size() == 1);
  CHECK((now.text[0] == old.text[2]));
  CHECK((now.resolution == old.resolution));
  const Facts facts = MetadataFacts(now);
  CHECK((facts.Find("EXIF") == "8 bytes" && facts.Find("IPTC") == "3 bytes" && facts.Find("resolution") == "72 dpi"));
}

TEST_CASE("containers cut or damaged anywhere give what is whole") {
  Metadata all = Everything(true);
  all.icc.resize(200);
  Bytes png(8), jpeg = {0xFF, 0xD8};
  const Bytes chunks = PngChunks(all);
  png.insert(png.end(), chunks.begin(), chunks.end());
  for (const JpegSegment& segment : JpegSegments(all)) {
    const size_t length = segment.bytes.size() + 2;
    for (const size_t byte : {size_t{0xFF}, size_t{segment.marker}, length >> 8, length & 0xFF})
      jpeg.push_back(static_cast<uint8_t>(byte));
    jpeg.insert(jpeg.end(), segment.bytes.begin(), segment.bytes.end());
  }
  for (const auto& [read, file] : {std::pair{&ReadPngMetadata, png}, std::pair{&ReadJpegMetadata, jpeg}}) {
    CHECK((read(FromMemory(file))->icc == all.icc));
    CHECK((read(FromMemory(file))->text.size() == 3));
    int whole = 0;
    test::ErrorsOf([&, readIt = read, bytes = file] {
      for (size_t at = 0; at < bytes.size(); ++at) {
        Bytes changed = bytes;
        changed[at] ^= 0x41;
        whole += readIt(FromMemory(changed))->exif == all.exif;
        readIt(FromMemory({bytes.data(), at}));
      }
    });
    CHECK(whole > 100);
  }
}
