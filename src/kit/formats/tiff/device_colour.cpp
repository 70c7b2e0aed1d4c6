#include "kit/formats/tiff/device_colour.h"

#include "kit/formats/tiff/tiff_file.h"

namespace norv {
namespace {

struct Kind {
  uint16_t photometric;
  DeviceColour kind;
};

constexpr Kind kKinds[] = {
    {PHOTOMETRIC_SEPARATED, DeviceColour::inks},
    {PHOTOMETRIC_CIELAB, DeviceColour::cieLab},
    {PHOTOMETRIC_ICCLAB, DeviceColour::iccLab},
    {PHOTOMETRIC_ITULAB, DeviceColour::ituLab},
};

// No ink is the larger number: the values of 0 % and 100 % stand the other way round.
bool IsInverted(const TiffFile& file) {
  uint16_t none = 0, full = 1;
  return TIFFGetField(file.tiff, TIFFTAG_DOTRANGE, &none, &full) && none > full;
}

}  // namespace

std::optional<DevicePixels> DevicePixelsOf(const TiffFile& file) {
  const auto photometric = file.Tag<uint16_t>(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
  for (const Kind& row : kKinds) {
    if (row.photometric != photometric) continue;
    DevicePixels pixels;
    pixels.kind = row.kind;
    if (file.Tag<uint16_t>(TIFFTAG_INKSET, INKSET_CMYK) != INKSET_CMYK) return {};
    pixels.inverted = IsInverted(file);
    float* white = nullptr;
    if (TIFFGetField(file.tiff, TIFFTAG_WHITEPOINT, &white) && white) pixels.white = {white[0], white[1]};
    return pixels;
  }
  return {};
}

std::vector<uint8_t> ProfileOf(const TiffFile& file) {
  uint32_t size = 0;
  const uint8_t* bytes = nullptr;
  if (!TIFFGetField(file.tiff, TIFFTAG_ICCPROFILE, &size, &bytes) || !bytes) return {};
  return {bytes, bytes + size};
}

}  // namespace norv
