// The fields of an EXIF block (JEITA CP-3451E) by their standard names.
#pragma once

#include <cstdint>
#include <span>

#include "kit/look/facts.h"

namespace norv {

// "EXIF Model", "EXIF ExposureTime" ...; the position once more in degrees; the makers' own by its size alone. Fields
// that have no name here stand under their number. At most 200 of them.
void AddExifFacts(std::span<const uint8_t> exif, Facts& facts);

}  // namespace norv
