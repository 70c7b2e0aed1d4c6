// The float image: re-dimensioning, conversion and .fdib files.
#include <algorithm>
#include <cstring>
#include <doctest/doctest.h>
#include <string>
#include <utility>
#include <vector>

#include "image/float_image_file.h"
#include "linear/random.h"
#include "support/scratch.h"

using namespace norv;
using namespace norv::test;

namespace {

FloatImage Random(int32_t width, int32_t height, int32_t format) {
  FloatImage image(width, height, format);
  RandomGenerator random;
  for (int32_t k = 0; k < image.planes; ++k)
    for (int32_t i = 0; i < image.count; ++i) image.plane[k].x[i] = static_cast<float>(random.Next()) * 0.0255f;
  return image;
}

template <typename T>
std::string Bytes(const T* elements, size_t n) {
  return {reinterpret_cast<const char*>(elements), n * sizeof(T)};
}

std::string Header(int32_t width, int32_t height, int32_t format, int32_t words) {
  const int32_t fields[] = {width, height, format, words};
  return Bytes(fields, 4);
}

bool SamePlanes(const FloatImage& a, const FloatImage& b) {
  bool same = a.planes == b.planes;
  for (int32_t k = 0; k < 4; ++k)
    same = same && a.plane[k].m == b.plane[k].m && a.plane[k].n == b.plane[k].n &&
           Bytes(a.plane[k].x, a.plane[k].mn) == Bytes(b.plane[k].x, b.plane[k].mn);
  return same;
}

bool Filled(const matrix& plane, int32_t count, float value) {
  bool good = plane.mn == count;
  for (int32_t i = 0; i < plane.mn; ++i) good = good && plane.x[i] == value;
  return good;
}

}  // namespace

TEST_CASE("an image's planes follow its size and colour model") {
  FloatImage image;
  CHECK((image.width == 0 && image.planes == 3 && image.format == 23 && image.toModel && !image.toModel4));
  image.Redim(5, 3, 8192 + 2);
  CHECK((image.planes == 4 && image.count == 15 && !image.toModel && image.toModel4 && image.fromModel4));
  for (int32_t k = 0; k < 3; ++k) CHECK(Filled(image.plane[k], 15, 0.0f));
  CHECK(Filled(image.plane[3], 15, 255.0f));
  CHECK((image.plane[1].m == 5 && image.plane[1].n == 3));

  image = Random(4, 4, 23);
  image.mask.Resize(4, 4);
  const FloatImage before = image;
  image.Redim(4, 4, 17);
  CHECK(image.format == 17);
  CHECK(SamePlanes(image, before));
  CHECK(!image.mask.Empty());
  image.Redim(4, 4, 0x20007);
  CHECK(Filled(image.plane[2], 16, 0.0f));
  CHECK(image.mask.Empty());
  image.Redim(4, 4, 0x30);
  CHECK((image.planes == 0 && !image.toModel && !image.toModel4 && image.plane[0].mn == 0));
  CHECK_THROWS_AS(image.Redim(60000, 60000, 23), const char*);
}

TEST_CASE(".fdib files byte for byte") {
  const ScratchFolder folder;
  FloatImage image = Random(5, 3, 23), back;
  std::string expected = Header(5, 3, 23, 0);
  for (int32_t k = 0; k < 3; ++k) expected += Bytes(image.plane[k].x, 15);
  REQUIRE(!image.Save(folder / "a.fdib", Folder::asGiven));
  CHECK(ReadBytes(folder / "a.fdib") == expected);
  REQUIRE(!back.Load(folder / "a.fdib", Folder::asGiven));
  CHECK(SamePlanes(image, back));
  CHECK((back.width == 5 && back.height == 3 && back.count == 15));

  // With a mask, whose words follow from the size, not from the stored count.
  image = Random(10, 10, 0x2003);
  image.mask.Resize(10, 10);
  image.mask.Set(9, 9);
  image.mask.Set(0, 1);
  expected = Header(10, 10, 0x2003, 4);
  for (int32_t k = 0; k < 4; ++k) expected += Bytes(image.plane[k].x, 100);
  expected += Bytes(image.mask.words.data(), 4);
  REQUIRE(!image.Save(folder / "a.fdib", Folder::asGiven));
  CHECK(ReadBytes(folder / "a.fdib") == expected);
  expected[12] = 1;
  WriteBytes(folder / "a.fdib", expected);
  REQUIRE(!back.Load(folder / "a.fdib", Folder::asGiven));
  CHECK(SamePlanes(image, back));
  CHECK(back.mask.words == image.mask.words);
  CHECK((back.mask.Get(9, 9) && !back.mask.Get(9, 8)));
  // An image without one drops the mask of the image that it replaces, though size and format stay.
  WriteBytes(folder / "a.fdib", Header(10, 10, 0x2003, 0));
  REQUIRE(!back.Load(folder / "a.fdib", Folder::asGiven));
  CHECK(back.mask.Empty());
}

TEST_CASE("rows in groups are the same file and the same image") {
  const ScratchFolder folder;
  FloatImage image = Random(7, 10, 0x2003);
  image.mask.Resize(7, 10);
  image.mask.Set(0, 3);
  image.mask.Set(9, 6);
  REQUIRE(!image.Save(folder / "whole.fdib", Folder::asGiven));
  FloatImageWriter out(folder / "groups.fdib", 7, 10, image.format, 3);
  for (const auto& [first, rows] : {std::pair{0, 4}, {4, 1}, {5, 5}}) {
    FloatImage part(7, rows, image.format);
    for (int32_t k = 0; k < 4; ++k) std::copy_n(image.plane[k].z[first], 7 * rows, part.plane[k].x);
    REQUIRE(out.WriteRows(part));
  }
  out.WriteMask(image.mask.words.data(), 2);
  out.WriteMask(image.mask.words.data() + 2, 1);
  REQUIRE(out.Commit());
  CHECK(ReadBytes(folder / "groups.fdib") == ReadBytes(folder / "whole.fdib"));

  FloatImageReader in(folder / "whole.fdib");
  FloatImage back(7, 10, image.format);
  in.Read(back, 0, 3);
  in.Read(back, 3, 7);
  CHECK(SamePlanes(back, image));
  std::vector<uint32_t> words(3);
  in.ReadMask(words.data(), 1);
  in.ReadMask(words.data() + 1, 2);
  CHECK(words == image.mask.words);
}

TEST_CASE("odd .fdib files") {
  const ScratchFolder folder;
  FloatImage image = Random(2, 2, 23);
  const FloatImage before = image;
  CHECK(image.Load(folder / "none.fdib", Folder::asGiven));
  CHECK(SamePlanes(image, before));
  CHECK(image.Save(folder / "none/a.fdib", Folder::asGiven));

  REQUIRE(!FloatImage().Save(folder / "a.fdib", Folder::asGiven));
  CHECK(ReadBytes(folder / "a.fdib") == Header(0, 0, 23, 0));

  // Ends within the second plane: zeros from there on.
  WriteBytes(folder / "a.fdib", Header(2, 2, 23, 0) + Bytes(before.plane[0].x, 4) + Bytes(before.plane[1].x, 2));
  CHECK(!image.Load(folder / "a.fdib", Folder::asGiven));
  CHECK(image.plane[1].x[1] == before.plane[1].x[1]);
  CHECK(image.plane[1].x[2] == 0.0f);
  CHECK(Filled(image.plane[2], 4, 0.0f));

  WriteBytes(folder / "a.fdib", Header(3, 2, 0x37, 0));
  CHECK(!image.Load(folder / "a.fdib", Folder::asGiven));
  CHECK((image.planes == 0 && image.width == 3 && image.count == 6));
  REQUIRE(!image.Save(folder / "b.fdib", Folder::asGiven));
  CHECK(ReadBytes(folder / "b.fdib") == Header(3, 2, 0x37, 0));

  for (const std::string& header : {Header(-1, 4, 23, 0), Header(50000, 50000, 23, 0), Header(-5, -5, 0, 1)}) {
    WriteBytes(folder / "a.fdib", header);
    CHECK_THROWS_AS((void)image.Load(folder / "a.fdib", Folder::asGiven), const char*);
    CHECK(image.count == 0);
  }
}

TEST_CASE("planes of different sizes are saved and converted within their bounds") {
  const ScratchFolder folder;
  FloatImage image = Random(4, 3, 0x20007);
  matrix larger(8, 6);
  larger.fill(7.0f);
  image.plane[1].dim(5, 2);
  image.plane[2] = larger;
  image.RefreshSize();
  REQUIRE(!image.Save(folder / "a.fdib", Folder::asGiven));
  const std::string bytes = ReadBytes(folder / "a.fdib");
  CHECK(bytes.size() == 16 + 3 * 48);
  CHECK(bytes.substr(16 + 88, 8) == std::string(8, '\0'));
  CHECK(bytes.substr(16 + 96) == Bytes(larger.x, 12));
  image.ConvertTo(23);
  CHECK(image.plane[2].x[9] != 7.0f);
  CHECK(image.plane[2].x[10] == 7.0f);
}

TEST_CASE("conversion goes pixel by pixel from model over display to model") {
  for (const ColourModel& from : ColourModels())
    for (const ColourModel& to : ColourModels()) {
      if (from.code == to.code) continue;
      FloatImage image = Random(37, 11, 23);  // more pixels than one run, with a tail
      image.ConvertTo(from.code);
      const FloatImage before = image;
      image.mask.Resize(37, 11);
      image.ConvertTo(to.code | 5);
      REQUIRE(image.format == (to.code | 5));
      REQUIRE(image.planes == to.planes);
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
  FloatImage image = Random(3, 3, 23);
  const FloatImage before = image;
  image.ConvertTo(17);
  CHECK(image.format == 17);
  CHECK(SamePlanes(image, before));
  image.ConvertTo(0x30);
  CHECK((image.planes == 0 && image.plane[0].mn == 0 && image.count == 9));
  image.ConvertTo(0x2007);
  CHECK(Filled(image.plane[3], 9, 255.0f));
}
