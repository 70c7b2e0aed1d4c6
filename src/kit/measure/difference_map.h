// Where two pictures differ, as a picture and in figures.
#pragma once

#include <cstdint>

#include "linear/matrix2.h"

namespace norv {

struct Picture;

// Of every pixel the largest difference of its colours, and of alpha where both have it, on the scale 0..255, whatever
// its sign; NaN where that is no number. Both of one size.
matrix LargestDifferences(const Picture& a, const Picture& b);

struct DifferenceFigures {
  double largest = 0;           // of those that are numbers
  int32_t column = 0, row = 0;  // of the first pixel with it
  int64_t differing = 0;        // pixels, those that are no numbers too
};
DifferenceFigures FiguresOf(const matrix& differences);

// The colours of differences: 0 black, 1 dark blue, 4 purple, 16 orange, 64 yellow, 255 white, in between the mixture;
// green where a value is no number.
Picture DifferenceMap(const matrix& differences);

}  // namespace norv
