// Pictures as norvkit import reads them: what was accepted has values on the scale, and survives a lossless file.
#include "kit/pictures/picture.h"

#include "fuzz.h"
#include "kit/failure.h"
#include "kit/pictures/image_file.h"

using namespace norv;
using namespace norv::fuzz;

namespace {

uint32_t BigEndian(const char* at) {
  uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | static_cast<uint8_t>(at[i]);
  return value;
}

// The checksum of a PNG's chunks (RFC 2083, 15), bit by bit.
uint32_t Checksum(const char* at, size_t size) {
  uint32_t sum = ~0u;
  for (; size > 0; --size, ++at) {
    sum ^= static_cast<uint8_t>(*at);
    for (int bit = 0; bit < 8; ++bit) sum = sum >> 1 ^ (sum & 1 ? 0xEDB88320u : 0);
  }
  return ~sum;
}

// With the right sums the engine's changes get past the library's first look.
void MendChecksums(std::string& png) {
  for (size_t at = 8; at + 12 <= png.size();) {
    const size_t length = BigEndian(&png[at]);
    if (length > png.size() - at - 12) return;
    const uint32_t sum = Checksum(&png[at + 4], length + 4);
    for (int i = 0; i < 4; ++i) png[at + 8 + length + i] = static_cast<char>(sum >> (24 - 8 * i));
    at += length + 12;
  }
}

void RequireRoundTrip(const Picture& picture) {
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
  if (bytes.starts_with("\x89PNG\r\n\x1a\n")) MendChecksums(bytes);
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
