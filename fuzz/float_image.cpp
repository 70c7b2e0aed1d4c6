// .fdib: planes and mask have the sizes that the header says, convert, and read back to the same bits.
#include "image/float_image.h"

#include "fuzz.h"

using namespace norv;
using namespace norv::fuzz;

namespace {

void RequireSizes(const FloatImage& image) {
  Require(int64_t{image.width} * image.height == image.count, "width x height pixels");
  for (int32_t k = 0; k < 4; ++k) Require(image.plane[k].mn == (k < image.planes ? image.count : 0), "a plane's size");
  Require(image.mask.Empty() || image.mask.Bits() == image.count, "a mask of one bit a pixel");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string path = PutFile("a.fdib", Input(data, size).Rest());
  FloatImage image;
  if (!Accepts([&] { Require(!image.Load(path, Folder::asGiven), "a file that is there opens"); })) return 0;
  RequireSizes(image);
  Require(!image.Save(path, Folder::asGiven), "the file can be written");
  FloatImage again;
  Require(!again.Load(path, Folder::asGiven), "the file can be read again");
  Require(again.format == image.format && again.mask.words == image.mask.words, "header and mask read back");
  for (int32_t k = 0; k < image.planes; ++k)
    Require(SameBits(image.plane[k].x, again.plane[k].x, size_t(image.count)), "planes read back");
  if (Accepts([&] { again.ConvertTo(kDefaultFormat); })) RequireSizes(again);
  return 0;
}
