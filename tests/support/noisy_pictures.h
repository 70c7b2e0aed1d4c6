// Pictures with edges, textures and soft places, and noise for them.
#pragma once

#include <cmath>
#include <random>

#include "linear/matrix2.h"

namespace norv::test {

inline matrix Scene(int32_t width, int32_t height) {
  matrix plane(width, height);
  for (int32_t r = 0; r < height; ++r)
    for (int32_t c = 0; c < width; ++c) {
      const bool disc = std::hypot(r - height * 0.4, c - width * 0.55) < height * 0.3;
      const double stripes = c < width / 3 ? 25 * std::sin(0.45 * r + 0.2 * c) : 0;
      plane.z[r][c] = static_cast<float>(60 + 0.6 * r + 0.3 * c + (disc ? 70 : 0) + stripes);
    }
  return plane;
}

inline void AddNoise(matrix& plane, double sigma, unsigned seed) {
  std::mt19937 generator(seed);
  // The sum of twelve even numbers is normal enough, and the same everywhere.
  for (int32_t i = 0; i < plane.mn; ++i) {
    double sum = -6;
    for (int k = 0; k < 12; ++k) sum += static_cast<double>(generator()) / 4294967296.0;
    plane.x[i] += static_cast<float>(sigma * sum);
  }
}

// In decibels, against a clean plane.
inline double PeakRatio(const matrix& plane, const matrix& clean) {
  double square = 0;
  for (int32_t i = 0; i < plane.mn; ++i) square += std::pow(plane.x[i] - clean.x[i], 2.0);
  return 10 * std::log10(255.0 * 255.0 * plane.mn / square);
}

}  // namespace norv::test
