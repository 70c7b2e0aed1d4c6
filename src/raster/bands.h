// Horizontal bands with margins: where they start, how they are cut out and put back. A band is a real small image
// whose edge rules belong to the result.
#pragma once

#include <cstdint>

#include "numeric/float_image.h"

namespace norv {

struct BandPlan {
  int32_t threads;  // bands, one a thread; 1 when the image has too few rows for that many
  int32_t height;   // source rows of a band without its margins; band i starts at row i * height, the last is cut short
};

// threads >= 1. Bands of floor(rows / threads) rows; fewer rows than threads in that: one band of all rows; otherwise
// raised until the bands cover the image.
BandPlan PlanBands(int32_t rows, int32_t threads);

// The band as an image of the source's width and format, `rows` rows from firstRow on; rows outside are mirrored.
// Planes only.
void CutBand(const FloatImage& source, int32_t firstRow, int32_t rows, FloatImage& band);

// Copies the band's planes without `margin` rows at its top and bottom to the destination from row `row` on; what lies
// outside the destination is left out.
void PasteBand(FloatImage& destination, int32_t row, const FloatImage& band, int32_t margin);

}  // namespace norv
