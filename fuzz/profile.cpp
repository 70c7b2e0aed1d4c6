// Colour profiles of inks and L*a*b*, and rows of such pixels: any bytes end in a conversion, the same at every turn.
#include "fuzz.h"
#include "kit/profiles/display_converter.h"

using namespace norv;
using namespace norv::fuzz;

namespace {

constexpr int32_t kWidth = 40;

// The corners of the colours, where tables end, and steps between.
std::vector<uint8_t> RowOf(const DevicePixels& pixels) {
  std::vector<uint8_t> row(size_t(kWidth) * pixels.channels * (pixels.bits / 8));
  for (size_t i = 0; i < row.size(); ++i) {
    const size_t sample = i / (pixels.bits / 8), x = sample / pixels.channels, k = sample % pixels.channels;
    row[i] = static_cast<uint8_t>(x < 16 ? (x >> k & 1) * 255 : 29 * sample + 7 * i);
  }
  return row;
}

DevicePixels PixelsFrom(Input& input) {
  DevicePixels pixels;
  pixels.kind = static_cast<DeviceColour>(input.Below(4));
  const int32_t flags = input.Byte();
  pixels.bits = flags & 1 ? 16 : 8;
  pixels.alpha = flags & 2;
  pixels.inverted = flags & 4;
  pixels.channels = pixels.Colours() + (flags >> 1 & 3);
  if (flags & 8) {
    double white[2];
    for (double& value : white) {
      uint8_t bytes[8];
      for (uint8_t& byte : bytes) byte = input.Byte();
      std::memcpy(&value, bytes, 8);
    }
    pixels.white = {white[0], white[1]};
  }
  return pixels;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const DevicePixels pixels = PixelsFrom(input);
  const size_t sample = pixels.bits / 8, from = sample * pixels.channels, to = sample * pixels.ShownChannels();
  const std::vector<uint8_t> row = RowOf(pixels), profile(input.Rest().begin(), input.Rest().end());
  std::vector<uint8_t> once(kWidth * to), again(kWidth * to);
  DisplayConverter converter(pixels, profile);
  converter.ConvertRow(row.data(), once.data(), kWidth);
  for (int32_t x = kWidth - 1; x >= 0; --x) converter.ConvertRow(row.data() + from * x, again.data() + to * x, 1);
  Require(once == again, "a pixel's colour does not depend on its neighbours");
  for (int32_t x = 0; pixels.alpha && x < kWidth; ++x)
    Require(SameBits(&once[to * x + 3 * sample], &row[from * x + pixels.Colours() * sample], sample), "alpha stays");
  return 0;
}
