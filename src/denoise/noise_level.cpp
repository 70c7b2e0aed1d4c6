#include "denoise/noise_level.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace norv {

double EstimateNoise(const matrix& plane) {
  std::vector<float> difference;
  for (int32_t r = 0; r + 1 < plane.n; ++r)
    for (int32_t c = 0; c + 1 < plane.m; ++c)
      difference.push_back(std::abs(plane.z[r][c] - plane.z[r][c + 1] - plane.z[r + 1][c] + plane.z[r + 1][c + 1]));
  if (difference.empty()) return 0;
  const auto middle = difference.begin() + static_cast<int64_t>(difference.size() / 2);
  std::nth_element(difference.begin(), middle, difference.end());
  return *middle / 2 / 0.6744897501960817;
}

}  // namespace norv
