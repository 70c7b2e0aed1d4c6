#include "numeric/bit_mask.h"

#include <cstddef>

namespace norv {

void BitMask::Resize(int32_t newWidth, int32_t newHeight) {
  width = newWidth;
  height = newHeight;
  words.assign(static_cast<size_t>((Bits() + 31) / 32), 0);
}

void BitMask::Clear() { *this = BitMask(); }

}  // namespace norv
