// What the headers of files say about them.
#include <doctest/doctest.h>

#include "image/bit_image.h"
#include "image/float_image_file.h"
#include "linear/matrix_file.h"
#include "support/scratch.h"

using namespace norv;
using namespace norv::test;

namespace {

// Bytes that the header at the file's start asks for.
template <typename Header>
int64_t Expected(const std::string& path) {
  FileIn file(path);
  const auto header = ReadHeader<Header>(file);
  CHECK(header.Possible());
  return header.FileBytes();
}

int64_t Size(const std::string& path) { return static_cast<int64_t>(std::filesystem::file_size(path)); }

}  // namespace

TEST_CASE("a header says how large its file is") {
  const ScratchFolder folder;
  const std::string path = folder / "a";
  for (const int32_t width : {0, 1, 7, 40})
    for (const int32_t height : {1, 5, 33}) {
      CAPTURE(width);
      CAPTURE(height);
      matrix(width, height).save(path, Folder::asGiven);
      CHECK(Expected<MatrixHeader>(path) == Size(path));
      BitImage(width, height).Save(path, Folder::asGiven);
      CHECK(Expected<BitImageHeader>(path) == Size(path));
      FloatImage image(width, height, 0x2007);
      REQUIRE(!image.Save(path, Folder::asGiven));
      CHECK(Expected<FloatImageHeader>(path) == Size(path));
      image.mask.Resize(width, height);
      REQUIRE(!image.Save(path, Folder::asGiven));
      CHECK(Expected<FloatImageHeader>(path) == Size(path));
    }
}

TEST_CASE("sizes that no file can have are told from those that it can") {
  CHECK(MatrixHeader{46340, 46340, 0}.Possible());
  CHECK_FALSE(MatrixHeader{46341, 46341, 0}.Possible());
  CHECK_FALSE(MatrixHeader{-1, -1, 1}.Possible());
  CHECK(BitImageHeader{26754, 26754}.Possible());  // rows of 80264 bytes
  CHECK_FALSE(BitImageHeader{26755, 26755}.Possible());
  CHECK(BitImageHeader{INT32_MAX, 0}.Possible());
  CHECK(FloatImageHeader{46340, 46340, 23, 0}.Possible());
  CHECK_FALSE(FloatImageHeader{46341, 46341, 23, 0}.Possible());
  CHECK_FALSE(FloatImageHeader{4, 4, 0x30, 0}.Possible());
  CHECK(FloatImageHeader{4, 4, 0x30, 0}.SizesPossible());
}
