#include "kit/metadata/image_resources.h"

#include <algorithm>
#include <cstring>

#include "kit/metadata/tiff_fields.h"

namespace norv {
namespace {

constexpr uint16_t kResolutionInfo = 0x03ED, kIptc = 0x0404, kOldThumbnail = 0x0409, kThumbnail = 0x040C,
                   kIptcDigest = 0x0425;

size_t Even(size_t bytes) { return bytes + bytes % 2; }

}  // namespace

void ReadResources(std::span<const uint8_t> bytes, Metadata& metadata) {
  while (bytes.size() >= 12 && std::memcmp(bytes.data(), "8BIM", 4) == 0) {
    const uint64_t number = NumberAt(&bytes[4], 2, true);
    const size_t head = 6 + Even(size_t{1} + bytes[6]);
    if (head + 4 > bytes.size()) return;
    const size_t size = NumberAt(&bytes[head], 4, true);
    if (size > bytes.size() - head - 4) return;
    const auto value = bytes.subspan(head + 4, size);
    const auto whole = bytes.first(std::min(bytes.size(), head + 4 + Even(size)));
    if (number == kIptc && metadata.iptc.empty())
      metadata.iptc.assign(value.begin(), value.end());
    else if (number != kIptc && number != kResolutionInfo && number != kOldThumbnail && number != kThumbnail &&
             number != kIptcDigest) {
      metadata.resources.insert(metadata.resources.end(), whole.begin(), whole.end());
      metadata.resources.resize(Even(metadata.resources.size()));
    }
    bytes = bytes.subspan(whole.size());
  }
}

std::vector<uint8_t> ResourcesOf(const Metadata& metadata) {
  std::vector<uint8_t> bytes;
  if (!metadata.iptc.empty()) {
    bytes = {'8', 'B', 'I', 'M', kIptc >> 8, kIptc & 0xFF, 0, 0, 0, 0, 0, 0};
    PutNumber(&bytes[8], 4, metadata.iptc.size(), true);
    bytes.insert(bytes.end(), metadata.iptc.begin(), metadata.iptc.end());
    bytes.resize(Even(bytes.size()));
  }
  bytes.insert(bytes.end(), metadata.resources.begin(), metadata.resources.end());
  return bytes;
}

}  // namespace norv
