// Pictures whose spectrum is that of natural ones, and blurs of them.
#pragma once

#include <algorithm>
#include <cmath>
#include <random>

#include "kit/pictures/conversions.h"
#include "kit/pictures/picture.h"
#include "support/random_plane.h"

namespace norv::test {

// Discs of all sizes, each over what lies below, their edges as soft as a lens leaves them (Lee, Mumford and Huang
// 2001).
inline matrix DeadLeaves(int32_t width, int32_t height, unsigned seed) {
  std::mt19937 engine(seed);
  std::uniform_real_distribution<double> unit(0, 1);
  matrix plane(width, height);
  plane.fill(128);
  for (int leaf = 0; leaf < 6000; ++leaf) {
    const double radius = 1.5 / std::sqrt(1e-4 + unit(engine)), x0 = width * unit(engine), y0 = height * unit(engine);
    const double grey = 20 + 215 * unit(engine), slope = unit(engine) - 0.5;
    for (int32_t y = std::max(0, int32_t(y0 - radius - 1)); y < std::min<double>(height, y0 + radius + 2); ++y)
      for (int32_t x = std::max(0, int32_t(x0 - radius - 1)); x < std::min<double>(width, x0 + radius + 2); ++x) {
        const double cover = std::clamp(0.5 + (radius - std::hypot(x - x0, y - y0)) / 1.2, 0.0, 1.0);
        plane.z[y][x] += static_cast<float>(cover * (grey + slope * (x - x0) - plane.z[y][x]));
      }
  }
  return plane;
}

// Under a Gaussian of sigma pixels, rounded to grey levels.
inline matrix Blurred(const matrix& plane, double sigma) {
  const int reach = static_cast<int>(5 * sigma) + 1;
  matrix along(plane.m, plane.n), both(plane.m, plane.n);
  const auto pass = [&](const matrix& from, matrix& to, int dx, int dy) {
    for (int32_t y = 0; y < plane.n; ++y)
      for (int32_t x = 0; x < plane.m; ++x) {
        double sum = 0, weights = 0;
        for (int i = -reach; i <= reach; ++i) {
          const double weight = sigma > 0 ? std::exp(-i * i / (2 * sigma * sigma)) : i == 0;
          sum += weight * from.z[Mirror(y + i * dy, plane.n)][Mirror(x + i * dx, plane.m)];
          weights += weight;
        }
        to.z[y][x] = static_cast<float>(sum / weights);
      }
  };
  pass(plane, along, 1, 0);
  pass(along, both, 0, 1);
  for (int32_t i = 0; i < both.mn; ++i) both.x[i] = std::clamp(std::round(both.x[i]), 0.0f, 255.0f);
  return both;
}

}  // namespace norv::test
