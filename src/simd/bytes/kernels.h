// Colours to bytes.
#pragma once

#include <cstdint>

namespace norv {

enum class VectorLevel;

struct ByteKernels {
  VectorLevel level;

  // n colours of three values (0..255), one array a value, to 3 n bytes, the third value first. Negative values and NaN
  // count as 0; a colour whose largest value exceeds 255 is scaled down as a whole; then rounded, halves up. An
  // infinite value becomes 255 and makes the finite ones beside it 0.
  void (*fromColours)(const float* const* colour, int32_t n, uint8_t* bytes);
};

// The table of a level at or below the machine's, and that of the level in use.
const ByteKernels& ByteKernelsOf(VectorLevel level);
const ByteKernels& ActiveByteKernels();

}  // namespace norv
