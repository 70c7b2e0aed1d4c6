// .bit: the store has the size that the header says and reads back to the same bytes.
#include "image/bit_image.h"

#include "fuzz.h"

using namespace norv;
using namespace norv::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string path = PutFile("a.bit", Input(data, size).Rest());
  BitImage image;
  if (!Accepts([&] { image.Load(path, Folder::asGiven); })) {
    Require(image.size == 0 && !image.pixels, "a refused image leaves nothing");
    return 0;
  }
  for (int32_t r = 0; image.size > 0 && r < image.height; ++r)
    Require(image.rows[r] == image.pixels.get() + r * BitStride(image.width), "rows lie one behind the other");
  image.Save(path, Folder::asGiven);
  BitImage again;
  again.Load(path, Folder::asGiven);
  Require(again.width == image.width && again.height == image.height && again.size == image.size, "sizes read back");
  Require(SameBits(again.pixels.get(), image.pixels.get(), size_t(image.size)), "pixels read back");
  return 0;
}
