// The float image: re-dimensioning, conversion and .fdib files.
#include "image/float_image_file.h"
#include "support/random_image.h"
#include "support/test.h"

namespace {

bool Filled(const matrix& plane, int32_t count, float value) {
  return plane.mn == count && std::all_of(plane.x, plane.x + count, [=](float x) { return x == value; });
}

}  // namespace

TEST_CASE("another size or colour model gives planes of zeros, a fourth of 255 and no mask; the same keeps all") {
  FloatImage image = RandomFloatImage(4, 3, 23);
  CHECK((image.planes == 3 && image.toModel && image.fromModel && !image.toModel4 && !image.fromModel4));
  image.mask.Resize(4, 3);
  const std::string before = ImageBytes(image);
  image.Redim(4, 3, 17);
  CHECK(std::exchange(image.format, 23) == 17);
  image.ConvertTo(17);
  CHECK(std::exchange(image.format, 23) == 17);
  CHECK(ImageBytes(image) == before);
  for (const auto& [height, format, planes] :
       {std::array{3, 0x2002, 4}, {3, 0x20007, 3}, {5, 0x20007, 3}, {5, 0x30, 0}}) {
    for (int32_t k = 0; k < image.planes; ++k) image.plane[k].fill(7);
    image.mask.Resize(4, 3);
    image.Redim(4, height, format);
    CHECK((image.planes == planes && image.count == 4 * height && image.mask.Empty()));
    CHECK(((image.toModel != nullptr) == (planes == 3) && (image.fromModel4 != nullptr) == (planes == 4)));
    for (int32_t k = 0; k < 4; ++k) CHECK(Filled(image.plane[k], k < planes ? image.count : 0, k == 3 ? 255.0f : 0.0f));
  }
  image.ConvertTo(0x2007);  // from and to an unknown format
  CHECK(Filled(image.plane[3], 20, 255.0f));
  image.ConvertTo(0x30);
  CHECK((image.planes == 0 && image.plane[0].mn == 0 && image.count == 20));
  CHECK_THROWS_AS(image.Redim(60000, 60000, 23), const char*);
}

TEST_CASE(".fdib files byte for byte, whole and in groups of rows") {
  const ScratchFolder folder;
  const std::string path = folder / "a.fdib";
  FloatImage back;
  for (const auto& [width, height, format, words] :
       {std::array{5, 8, 23, 0}, {10, 10, 0x2003, 4}, {10, 10, 0x2003, 0}, {1, 7, 0x20007, 1}, {3, 7, 0x37, 0}}) {
    CAPTURE(width);
    FloatImage image = RandomFloatImage(width, height, format), parts(width, height, format);
    if (words) {
      image.mask.Resize(width, height);
      image.mask.Set(height - 1, width - 1);
      image.mask.Set(1, 0);
      parts.mask.Resize(width, height);
    }
    const std::string expected = ImageBytes(image);
    CHECK(FloatImageHeader{width, height, format, words}.FileBytes() == static_cast<int64_t>(expected.size()));
    REQUIRE(!image.Save(path, Folder::asGiven));
    CHECK(ReadBytes(path) == expected);
    FloatImageWriter out(folder / "groups.fdib", width, height, format, words);
    for (const auto& [first, rows] : {std::pair{0, 4}, {4, 1}, {5, height - 5}}) {
      FloatImage part(width, rows, format);
      for (int32_t k = 0; k < image.planes; ++k) std::copy_n(image.plane[k].z[first], width * rows, part.plane[k].x);
      REQUIRE(out.WriteRows(part));
    }
    out.WriteMask(image.mask.words.data(), words / 2);
    out.WriteMask(image.mask.words.data() + words / 2, words - words / 2);
    REQUIRE(out.Commit());
    CHECK(ReadBytes(folder / "groups.fdib") == expected);

    // The mask's length follows from the size, not from the count that is stored.
    if (words) WriteBytes(path, std::string(expected).replace(12, 1, 1, '\1'));
    REQUIRE(!back.Load(path, Folder::asGiven));
    CHECK(ImageBytes(back) == expected);
    CHECK((back.count == width * height && back.plane[0].m == image.plane[0].m));
    FloatImageReader in(path);
    in.Read(parts, 0, 3);
    in.Read(parts, 3, height - 3);
    in.ReadMask(parts.mask.words.data(), words / 2);
    in.ReadMask(parts.mask.words.data() + words / 2, words - words / 2);
    CHECK(ImageBytes(parts) == expected);
  }
  BitMask mask;
  mask.Resize(10, 10);
  mask.Set(3, 4);
  CHECK((mask.Get(3, 4) && !mask.Get(3, 5) && mask.words[1] == 4));
}

TEST_CASE("odd .fdib files") {
  const ScratchFolder folder;
  const std::string path = folder / "a.fdib";
  FloatImage image = RandomFloatImage(2, 2, 23);
  const std::string before = ImageBytes(image);
  CHECK(image.Load(folder / "none.fdib", Folder::asGiven));
  CHECK(ImageBytes(image) == before);
  CHECK(image.Save(folder / "none/a.fdib", Folder::asGiven));
  REQUIRE(!FloatImage().Save(path, Folder::asGiven));
  CHECK(ReadBytes(path) == Int32Bytes({0, 0, 23, 0}));
  // Ends within the second plane: zeros from there on.
  WriteBytes(path, before.substr(0, 40));
  CHECK(!image.Load(path, Folder::asGiven));
  CHECK(ImageBytes(image) == before.substr(0, 40) + std::string(24, '\0'));

  for (const auto& [width, height] : {std::pair{-1, 4}, {-5, -5}, {46341, 46341}, {50000, 50000}}) {
    CHECK_FALSE(FloatImageHeader{width, height, 23, 0}.Possible());
    WriteBytes(path, Int32Bytes({width, height, 23, 1}));
    CHECK_THROWS_AS((void)image.Load(path, Folder::asGiven), const char*);
    CHECK(image.count == 0);
  }
  CHECK(FloatImageHeader{46340, 46340, 23, 0}.Possible());
  CHECK((FloatImageHeader{4, 4, 0x30, 0}.SizesPossible() && !FloatImageHeader{4, 4, 0x30, 0}.Possible()));
}

TEST_CASE("planes of different sizes are saved and converted within their bounds") {
  const ScratchFolder folder;
  FloatImage image = RandomFloatImage(4, 3, 0x20007);
  matrix larger(8, 6);
  larger.fill(7.0f);
  image.plane[1].dim(5, 2);
  image.plane[2] = larger;
  REQUIRE(!image.Save(folder / "a.fdib", Folder::asGiven));
  const std::string bytes = ReadBytes(folder / "a.fdib");
  CHECK(bytes.size() == 16 + 3 * 48);
  CHECK(bytes.substr(16 + 88) == std::string(8, '\0') + BytesOf(larger.x, 12));
  image.ConvertTo(23);
  CHECK((image.plane[2].x[9] != 7.0f && image.plane[2].x[10] == 7.0f));
}

TEST_CASE("conversion goes pixel by pixel from model over display to model") {
  for (const ColourModel& from : ColourModels())
    for (const ColourModel& to : ColourModels()) {
      if (from.code == to.code) continue;
      FloatImage image = RandomFloatImage(37, 11, 23);  // more pixels than one run, with a tail
      image.ConvertTo(from.code);
      const FloatImage before = image;
      image.mask.Resize(37, 11);
      image.ConvertTo(to.code | 5);
      REQUIRE((image.format == (to.code | 5) && image.planes == to.planes));
      CHECK(!image.mask.Empty());
      int wrong = image.plane[3].mn != (to.planes == 4 ? image.count : 0);
      for (int32_t i = 0; i < image.count; ++i) {
        float pixel[4], display[4], expected[4];
        for (int32_t k = 0; k < from.planes; ++k) pixel[k] = before.plane[k].x[i];
        to.toModel(expected, from.fromModel(display, pixel));
        for (int32_t k = 0; k < to.planes; ++k) wrong += image.plane[k].x[i] != expected[k];
      }
      CAPTURE(std::string(from.name) + " to " + to.name);
      CHECK(wrong == 0);
    }
}
