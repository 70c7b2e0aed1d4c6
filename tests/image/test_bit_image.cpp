// The image of three bytes a pixel and .bit files.
#include "image/bit_image.h"
#include "support/test.h"

TEST_CASE("bit image rows are padded to four bytes, in memory, in copies and in the file") {
  const ScratchFolder folder;
  for (const auto& [width, height, stride] :
       {std::array{5, 2, 16}, {4, 3, 12}, {1, 1, 4}, {3, 3, 12}, {0, 7, 0}, {7, 0, 0}}) {
    CAPTURE(width);
    BitImage image(width, height), back(2, 2);
    REQUIRE(image.size == stride * height);
    CHECK((image.count == width * height && (image.pixels == nullptr) == (image.count == 0)));
    std::string expected = Int32Bytes({width, height});
    for (int32_t i = 0; i < image.size; ++i) {
      image.rows[i / stride][i % stride] = static_cast<uint8_t>(i * 7 + 1);
      expected += static_cast<char>(i * 7 + 1);
    }
    image.Save(folder / "a.bit", Folder::asGiven);
    CHECK(ReadBytes(folder / "a.bit") == expected);
    CHECK(BitImageHeader{width, height}.FileBytes() == static_cast<int64_t>(expected.size()));
    CHECK(&back.Load(folder / "a.bit", Folder::asGiven) == &back);
    const BitImage copy = back;
    std::fill_n(back.pixels.get(), back.size, uint8_t{0});
    CHECK(Int32Bytes({copy.width, copy.height}) + BytesOf(copy.pixels.get(), copy.size) == expected);
  }
}

TEST_CASE("what memory held before does not show in a bit image's padding") {
  BitImage image(501, 300);
  std::memset(image.pixels.get(), 255, image.size);
  image.Redim(501, 300);  // as a rule the same memory again
  int32_t sum = 0;
  for (int32_t k = 0; k < 300; ++k) sum += image.rows[k][3 * 501];
  CHECK(sum == 0);
}

TEST_CASE("bit files that cannot be used") {
  const ScratchFolder folder;
  BitImage image(2, 2);
  CHECK_THROWS_WITH(image.Load(folder / "none.bit", Folder::asGiven), "PROBLEM OPENING FILE FOR WRITING!");
  CHECK_THROWS_WITH(image.Save(folder / "no/where.bit", Folder::asGiven), "PROBLEM OPENING FILE FOR WRITING!");

  // Sizes that are negative or whose store exceeds 32 bits are refused before anything is allocated.
  for (const auto& [width, height] :
       {std::pair{-1, 5}, {5, -1}, {-3, -3}, {26755, 26755}, {30000, 30000}, {1 << 30, 2}}) {
    CHECK_FALSE(BitImageHeader{width, height}.Possible());
    WriteBytes(folder / "bad.bit", Int32Bytes({width, height}));
    CHECK_THROWS_AS(image.Load(folder / "bad.bit", Folder::asGiven), const char*);
    CHECK((image.pixels == nullptr && image.size == 0));
  }
  CHECK(BitImageHeader{26754, 26754}.Possible());  // rows of 80264 bytes
  CHECK(BitImageHeader{INT32_MAX, 0}.Possible());

  WriteBytes(folder / "short.bit", Int32Bytes({2, 2}) + "abcde");
  image.Load(folder / "short.bit", Folder::asGiven);
  CHECK(BytesOf(image.pixels.get(), 16) == "abcde" + std::string(11, '\0'));
  WriteBytes(folder / "short.bit", "abc");
  CHECK_NOTHROW(image.Load(folder / "short.bit", Folder::asGiven));
}
