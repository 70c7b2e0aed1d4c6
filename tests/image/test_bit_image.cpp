#include <cstring>
#include <doctest/doctest.h>

#include "image/bit_image.h"
#include "support/scratch.h"

using namespace norv;
using namespace norv::test;

namespace {

BitImage Numbered(int32_t width, int32_t height) {
  BitImage image(width, height);
  for (int32_t i = 0; i < image.size; ++i) image.pixels[i] = static_cast<uint8_t>(i * 7 + 1);
  return image;
}

std::string Header(int32_t width, int32_t height) {
  std::string bytes(8, '\0');
  std::memcpy(bytes.data(), &width, 4);
  std::memcpy(bytes.data() + 4, &height, 4);
  return bytes;
}

}  // namespace

TEST_CASE("bit image rows are padded to four bytes, in memory and in the file") {
  struct {
    int32_t width, height, stride;
  } const cases[] = {{5, 2, 16}, {4, 3, 12}, {1, 1, 4}, {3, 3, 12}, {0, 7, 0}, {7, 0, 0}};
  ScratchFolder folder;
  for (const auto& c : cases) {
    CAPTURE(c.width);
    const BitImage image = Numbered(c.width, c.height);
    CHECK(image.count == c.width * c.height);
    CHECK(image.size == c.stride * c.height);
    CHECK((image.pixels == nullptr) == (image.count == 0));
    if (image.count > 0) CHECK(image.rows[c.height - 1] == image.pixels.get() + c.stride * (c.height - 1));

    image.Save(folder / "a.bit", Folder::asGiven);
    std::string expected = Header(c.width, c.height);
    for (int32_t i = 0; i < image.size; ++i) expected += static_cast<char>(i * 7 + 1);
    CHECK(ReadBytes(folder / "a.bit") == expected);

    BitImage back(2, 2);
    CHECK(&back.Load(folder / "a.bit", Folder::asGiven) == &back);
    CHECK(back.width == c.width);
    CHECK(back.height == c.height);
    CHECK(back.size == image.size);
    CHECK((image.size == 0 || std::memcmp(back.pixels.get(), image.pixels.get(), image.size) == 0));
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

TEST_CASE("a copy of a bit image owns its store") {
  const BitImage image = Numbered(5, 3);
  BitImage copy = image;
  CHECK(std::memcmp(copy.pixels.get(), image.pixels.get(), image.size) == 0);
  copy.rows[1][0] ^= 255;
  CHECK(copy.rows[1][0] != image.rows[1][0]);
  copy = BitImage();
  CHECK(copy.size == 0);
  CHECK(image.rows[2] == image.pixels.get() + 32);
}

TEST_CASE("bit files that cannot be used") {
  ScratchFolder folder;
  BitImage image(2, 2);
  CHECK_THROWS_WITH(image.Load(folder / "none.bit", Folder::asGiven), "PROBLEM OPENING FILE FOR WRITING!");
  CHECK_THROWS_WITH(image.Save(folder / "no/where.bit", Folder::asGiven), "PROBLEM OPENING FILE FOR WRITING!");

  // Sizes that are negative or whose store exceeds 32 bits are refused before anything is allocated.
  for (const auto& header : {Header(-1, 5), Header(5, -1), Header(-3, -3), Header(30000, 30000), Header(1 << 30, 2)}) {
    WriteBytes(folder / "bad.bit", header);
    CHECK_THROWS_AS(image.Load(folder / "bad.bit", Folder::asGiven), const char*);
    CHECK(image.pixels == nullptr);
    CHECK(image.size == 0);
  }

  WriteBytes(folder / "short.bit", Header(2, 2) + "abcde");
  image.Load(folder / "short.bit", Folder::asGiven);
  CHECK(std::string(image.pixels.get(), image.pixels.get() + 16) == "abcde" + std::string(11, '\0'));
  WriteBytes(folder / "short.bit", "abc");
  CHECK_NOTHROW(image.Load(folder / "short.bit", Folder::asGiven));
}
