// A PNG's chunks with the sums that they should have.
#pragma once

#include <cstdint>
#include <string>

namespace norv::fuzz {

inline uint32_t BigEndian(const char* at) {
  uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | static_cast<uint8_t>(at[i]);
  return value;
}

// The checksum of a PNG's chunks (RFC 2083, 15), bit by bit.
inline uint32_t Checksum(const char* at, size_t size) {
  uint32_t sum = ~0u;
  for (; size > 0; --size, ++at) {
    sum ^= static_cast<uint8_t>(*at);
    for (int bit = 0; bit < 8; ++bit) sum = sum >> 1 ^ (sum & 1 ? 0xEDB88320u : 0);
  }
  return ~sum;
}

// With the right sums the engine's changes get past the library's first look.
inline void MendPngChecksums(std::string& png) {
  for (size_t at = 8; at + 12 <= png.size();) {
    const size_t length = BigEndian(&png[at]);
    if (length > png.size() - at - 12) return;
    const uint32_t sum = Checksum(&png[at + 4], length + 4);
    for (int i = 0; i < 4; ++i) png[at + 8 + length + i] = static_cast<char>(sum >> (24 - 8 * i));
    at += length + 12;
  }
}

}  // namespace norv::fuzz
