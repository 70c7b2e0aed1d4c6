// One bit a pixel: pixel k = row * width + column is bit k mod 32 of word k / 32.
#pragma once

#include <cstdint>
#include <vector>

namespace norv {

struct BitMask {
  int32_t width = 0;
  int32_t height = 0;
  std::vector<uint32_t> words;  // ceil(width * height / 32), unused bits of the last one included

  // All bits clear. Throws std::bad_alloc.
  void Resize(int32_t newWidth, int32_t newHeight);
  void Clear();
  bool Empty() const { return words.empty(); }
  int64_t Bits() const { return int64_t{width} * height; }

  bool Get(int32_t row, int32_t column) const {
    const int64_t k = int64_t{row} * width + column;
    return words[k / 32] >> (k % 32) & 1;
  }
  void Set(int32_t row, int32_t column) {
    const int64_t k = int64_t{row} * width + column;
    words[k / 32] |= uint32_t{1} << (k % 32);
  }
};

}  // namespace norv
