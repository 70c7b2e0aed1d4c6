// Which reduction filter has made a picture, as far as the picture alone tells.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace norv {

struct SeenLuminance;

// Filters that a picture alone hardly tells apart.
struct FilterFamily {
  const char* name;             // in words
  std::vector<int32_t> orders;  // ShrinkOrders, the usual one first
  double probability = 0;       // 0 to 1
};

// Every family with its probability, the likeliest first: how well each filter, at the factors 2 and 4, explains the
// departure of the luminance's spectrum from those of natural pictures (power_law.h), all families being as likely
// beforehand. A picture that no filter has made comes out as one of them too. Throws as PowerInCells().
std::vector<FilterFamily> EstimateFilter(const SeenLuminance& small);

}  // namespace norv
