// Planes of reproducible random values.
#pragma once

#include <random>

#include "linear/matrix2.h"

namespace norv::test {

inline matrix RandomPlane(int32_t w, int32_t h, unsigned seed, float least = 0, float most = 255) {
  std::mt19937 engine(seed);
  std::uniform_real_distribution<float> value(least, most);
  matrix plane(w, h);
  for (int32_t i = 0; i < plane.mn; ++i) plane.x[i] = value(engine);
  return plane;
}

inline double Product(const matrix& a, const matrix& b) {
  double sum = 0;
  for (int32_t i = 0; i < a.mn; ++i) sum += static_cast<double>(a.x[i]) * static_cast<double>(b.x[i]);
  return sum;
}

}  // namespace norv::test
