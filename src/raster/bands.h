// Horizontal bands with margins: where they start, how they are cut out and put back. A band is a real small image
// whose edge rules belong to the result.
#pragma once

#include <cstdint>

#include "image/image_rows.h"
#include "raster/edges.h"

namespace norv {

struct BandPlan {
  int32_t bands;   // as many as were asked for, or 1
  int32_t height;  // source rows of a band without its margins; band i starts at row i * height, the last is cut short
};

// Divides `rows` rows into so many bands (1 or more) of one height, the least that covers them all. Where
// floor(rows / bands) is less than the number of bands, one band takes all rows, by the contract with
// the graphical program.
BandPlan PlanBands(int32_t rows, int32_t bands);

// The band as an image of the source's width and format, `rows` rows from firstRow on; rows outside are mirrored.
// Planes only.
void CutBand(const FloatImage& source, int32_t firstRow, int32_t rows, FloatImage& band);

// Copies the band's planes without `margin` rows at its top and bottom to the destination from row `row` on; what lies
// outside the destination is left out.
void PasteBand(FloatImage& destination, int32_t row, const FloatImage& band, int32_t margin);

// Rows of an image that an operation makes at a time, and the window of rows that it may look at. Unlike a band, a
// strip is no image of its own: at the image's ends there is no margin, and nothing shows afterwards where strips met.
struct Strip {
  int32_t first, rows;              // what is made
  int32_t windowFirst, windowRows;  // with the margins
  int32_t height;                   // of the image

  PlaneWindow WindowOf(const matrix& plane) const { return {plane, windowFirst, height}; }
};

// Rows of a strip where a height is cut into as few strips of at most so many rows as cover it: all but equal ones.
constexpr int32_t EvenStripRows(int32_t height, int32_t most) {
  const int32_t strips = (height + most - 1) / most;
  return strips > 0 ? (height + strips - 1) / strips : 1;
}

// The strip of `rows` rows from `first` on, fewer at the image's end, with a margin as far as the image goes.
Strip PlanStrip(int32_t height, int32_t first, int32_t rows, int32_t margin);
inline Strip WholeStrip(int32_t height) { return PlanStrip(height, 0, height, 0); }

// Looks at the rows of a source through windows that move down it and may overlap; every row is read once.
class RowWindow {
 public:
  explicit RowWindow(const ImageSource& source) : source_(source) {}

  // The strip's window: rows windowFirst, ... as an image. Windows neither begin nor end above the one before, and
  // leave no gap.
  const FloatImage& Show(const Strip& strip);

 private:
  const ImageSource& source_;
  FloatImage window_;
  int32_t first_ = 0, rows_ = 0;
};

}  // namespace norv
