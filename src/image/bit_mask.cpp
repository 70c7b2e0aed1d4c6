#include "image/bit_mask.h"

#include <cstddef>
#include <new>

#include "platform/memory.h"

namespace norv {
namespace {

constexpr size_t kUnasked = size_t{1} << 20;  // up to so many words nobody asks whether memory is left

}  // namespace

void BitMask::Resize(int32_t newWidth, int32_t newHeight) {
  width = newWidth;
  height = newHeight;
  const size_t needed = static_cast<size_t>((Bits() + 31) / 32);
  if (needed > kUnasked && needed * sizeof(uint32_t) > AvailableMemory()) throw std::bad_alloc();
  words.assign(needed, 0);
}

void BitMask::Clear() { *this = BitMask(); }

}  // namespace norv
