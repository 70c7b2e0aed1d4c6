// Which reduction filter has made one picture of another.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "linear/matrix2.h"

namespace norv {

// A filter and how near it comes.
struct FilterMatch {
  std::vector<int32_t> orders;  // ShrinkOrders; several where their filters are the same at this factor
  double decibels = 0;          // PSNR of the luminance against the small picture, not rounded; infinite: identical
};

struct FilterRanking {
  int32_t factor = 0;
  std::vector<FilterMatch> matches;  // the best first
  int32_t parts = 0, partsWon = 0;   // pieces of the picture, and those in which the best is nearer than the second

  // By how many decibels the best is before the second.
  double Margin() const;
  // Whether the picture tells the two apart.
  bool IsSure() const;
  // Whether what the best leaves is more than rounding and compression.
  bool Explains() const;
};

// Every filter there is, compared over the luminance of the picture, or of the middle of a large one; the factor, 2 to
// 64, follows from the sizes. Throws a Failure for sizes that no whole factor joins and for pictures that are too small
// to compare.
FilterRanking RankFilters(const matrix& small, const matrix& large);

}  // namespace norv
