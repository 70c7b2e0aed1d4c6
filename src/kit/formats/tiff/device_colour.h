// What the tags of a TIFF say about inks and L*a*b*.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "kit/profiles/display_converter.h"

namespace norv {

struct TiffFile;

// The kind of colours, whether inverted, and their white point. Nothing for a file of other colours, and for other inks
// than the four.
std::optional<DevicePixels> DevicePixelsOf(const TiffFile& file);

// The colour profile, empty without one.
std::vector<uint8_t> ProfileOf(const TiffFile& file);

}  // namespace norv
