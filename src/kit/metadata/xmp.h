// XMP packets (ISO 16684-1) as text: what is said of size and orientation, and the parts that JPEG cuts them into.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace norv {

// Says what is true of a picture of this size; of one that is stored upright since its orientation was known, that
// too. Only where the packet says something of it; thumbnails go.
void PutXmpRight(std::vector<uint8_t>& xmp, int32_t width, int32_t height, bool upright);

// The 32 characters by which a packet names its extension; empty for none.
std::string ExtensionOfXmp(std::span<const uint8_t> xmp);

// One packet of a packet and its extension, which has the same form.
std::vector<uint8_t> JoinedXmp(std::span<const uint8_t> packet, std::span<const uint8_t> extension);

// A packet that says nothing but that the other one is its extension of this name.
std::vector<uint8_t> XmpThatNames(const std::string& extension);

}  // namespace norv
