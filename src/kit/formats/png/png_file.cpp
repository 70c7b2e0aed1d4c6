#include "kit/formats/png/png_file.h"

#include <png.h>

#include "kit/formats/codec.h"
#include "kit/metadata/carry.h"

namespace norv {
namespace {

bool IsPng(std::span<const uint8_t> start) { return start.size() >= 8 && png_sig_cmp(start.data(), 0, 8) == 0; }

}  // namespace

const Codec kPng = {.name = "PNG",
                    .extensions = {"png"},
                    .mostBits = 16,
                    .alpha = true,
                    .compressing = Compressing::byDegrees,
                    .carries = kCarriesIcc | kCarriesExif | kCarriesXmp | kCarriesIptc | kCarriesText |
                               kCarriesReceipt | kCarriesResolution | kCarriesGamma | kCarriesChromaticities,
                    .recognise = IsPng,
                    .open = OpenPng,
                    .create = CreatePng};

}  // namespace norv
