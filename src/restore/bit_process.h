// The road of the three-byte images: display colours to bytes, and a whole BitImage enlarged and restored.
#pragma once

#include <cstdint>

#include "numeric/bit_image.h"
#include "numeric/bit_mask.h"
#include "numeric/float_image.h"

namespace norv {

// Three display values (0..255) to bytes, the third value first. Negative values and NaN count as 0; a colour whose
// largest value exceeds 255 is scaled down as a whole, so that its hue stays; then rounded, halves up. An infinite
// value becomes 255 and makes the finite ones beside it 0.
void ToBytes(const float* colour, uint8_t* out);

// Writes source without the given margins into dest, its first pixel at column x0 and row y0, through the source
// format's conversion to display colours (all planes of its model) and ToBytes. Pixels outside dest, and those whose
// bit in the mask (dest's coordinates, null: none) is clear, are skipped.
void PasteToBitImage(BitImage& dest, int32_t x0, int32_t y0, const FloatImage& source, const BitMask* mask,
                     int32_t left, int32_t right, int32_t top, int32_t bottom);

}  // namespace norv
