#include "kit/formats/tiff/tiff.h"

#include <cstring>

#include "kit/formats/codec.h"
#include "kit/metadata/carry.h"

namespace norv {
namespace {

bool IsTiff(std::span<const uint8_t> start) {
  if (start.size() < 4) return false;
  const auto is = [&](const char* mark) { return std::memcmp(start.data(), mark, 4) == 0; };
  return is("II*\0") || is("MM\0*") || is("II+\0") || is("MM\0+");
}

}  // namespace

const Codec kTiff = {
    .name = "TIFF",
    .extensions = {"tif", "tiff"},
    .mostBits = 32,
    .alpha = true,
    .compressing = Compressing::orNot,
    .several = "pages",
    .carries = kCarriesIcc | kCarriesExif | kCarriesXmp | kCarriesIptc | kCarriesResolution | kCarriesChromaticities,
    .recognise = IsTiff,
    .open = OpenTiff,
    .create = CreateTiff,
    .places = PlacesInTiff};

}  // namespace norv
