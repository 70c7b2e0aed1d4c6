// Pictures as norvkit import reads them: what was accepted has values on the scale, and survives a lossless file.
#include "kit/pictures/picture.h"

#include "fuzz.h"
#include "kit/failure.h"
#include "kit/pictures/image_file.h"
#include "png_checksums.h"

using namespace norv;
using namespace norv::fuzz;

namespace {

void RequireRoundTrip(const Picture& picture) {
  if (picture.bits == 32) return;  // floats lie on no scale, and PNG would round them
  const std::string path = Home() + "again.png";
  Require(WritePicture(path, picture, {}) == 0, "values lie on the scale");
  const Picture again = ReadPicture(path);
  Require(again.channels == picture.channels && again.bits == picture.bits, "channels and bits stay");
  for (int32_t k = 0; k < picture.channels; ++k) {
    Require(again.plane[k].m == picture.Width() && again.plane[k].n == picture.Height(), "sizes stay");
    Require(SameBits(again.plane[k].x, picture.plane[k].x, size_t(picture.plane[k].mn)), "values stay");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string bytes(Input(data, size).Rest());
  if (bytes.starts_with("\x89PNG\r\n\x1a\n")) MendPngChecksums(bytes);
  const std::string path = PutFile("picture", bytes);
  try {
    const Picture picture = ReadPicture(path);
    RequireRoundTrip(picture);
    WriteChoice again;
    again.overwrite = true;
    SaveImage(Home() + "a.fdib", picture, again);
  } catch (const Failure&) {
  } catch (const char*) {
  }
  return 0;
}
