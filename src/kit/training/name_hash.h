// Choices that follow from a name alone, so that pictures added later hardly change them.
#pragma once

#include <cstdint>
#include <string>

namespace norv {

// FNV-1a (Fowler, Noll, Vo), 64 bits.
inline uint64_t HashOf(const std::string& name) {
  uint64_t hash = 14695981039346656037u;
  for (const unsigned char c : name) hash = (hash ^ c) * 1099511628211u;
  return hash;
}

}  // namespace norv
