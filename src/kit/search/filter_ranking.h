// Which reduction filter has made one picture of another.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace norv {

struct Picture;

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

// The factor by which the small picture was made of the large one, 2 to 64: what is left over at the right and below
// was cropped, or became one more pixel. Throws a Failure for sizes that no whole factor joins.
int32_t FactorBetween(const Picture& small, const Picture& large);

// Every filter there is, compared over the picture, or the middle of a large one. Alpha is laid on white. Throws a
// Failure as FactorBetween() and for pictures that are too small to compare.
FilterRanking RankFilters(const Picture& small, const Picture& large);

}  // namespace norv
