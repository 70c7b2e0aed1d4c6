// The road of the three-byte images: display colours to bytes, and a whole BitImage enlarged and restored.
#pragma once

#include <cstdint>

#include "image/bit_image.h"
#include "image/bit_mask.h"
#include "image/float_image.h"
#include "restore/parameters.h"

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

// Enlarges and restores the image in place, in horizontal bands with margins, one a thread (0 threads and fewer work as
// 1): each a FloatImage of the format code bandFormat, cut out of the source with rows outside mirrored, restored as
// RestoreImage() does and pasted. Throws as CheckRestoration(), or the out-of-memory message, before anything is
// changed or when the enlarged image does not fit into memory. An empty image becomes an empty image of the enlarged
// sizes.
void ProcessBitImage(BitImage& image, const RestoreParameters& parameters, int32_t bandFormat, int32_t threads);

// The same with any number of bands, at most `threads` of them in work at a time.
void ProcessBitImageInBands(BitImage& image, const RestoreParameters& parameters, int32_t bandFormat, int32_t bands,
                            int32_t threads);

}  // namespace norv
