// Image resources: "8BIM", a number, a name and bytes, one behind the other, as JPEG's APP13 and a TIFF tag hold them.
#pragma once

#include <cstdint>
#include <span>

#include "kit/metadata/metadata.h"

namespace norv {

// IPTC's datasets and the other resources into their places. Thumbnails and the resolution of the picture, which are
// said elsewhere, go. What does not read as a resource ends the list.
void ReadResources(std::span<const uint8_t> bytes, Metadata& metadata);

// All of them again; empty when there are none.
std::vector<uint8_t> ResourcesOf(const Metadata& metadata);

}  // namespace norv
