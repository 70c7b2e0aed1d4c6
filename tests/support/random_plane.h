// Planes of reproducible random values, and how far planes are apart.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <type_traits>

#include "linear/matrix2.h"
#include "linear/random.h"

namespace norv::test {

inline matrix RandomPlane(int32_t w, int32_t h, unsigned seed, float least = 0, float most = 255) {
  std::mt19937 engine(seed);
  std::uniform_real_distribution<float> value(least, most);
  matrix plane(w, h);
  for (int32_t i = 0; i < plane.mn; ++i) plane.x[i] = value(engine);
  return plane;
}

// Element i of an axis of n that is mirrored without repeating its ends.
inline int Mirror(int i, int n) {
  if (n == 1) return 0;
  while (i < 0 || i >= n) i = i < 0 ? -i : 2 * (n - 1) - i;
  return i;
}

// Of either precision, from the tool's generator: elements from -1 to 1.
template <typename Matrix>
Matrix RandomMatrix(int32_t m, int32_t n, RandomGenerator& random) {
  Matrix a(m, n);
  for (int32_t i = 0; i < a.mn; ++i) {
    const double value = (random.Next() - 5000) * 2e-4 + random.Next() * 1e-9;
    a.x[i] = static_cast<std::remove_pointer_t<decltype(a.x)>>(value);
  }
  return a;
}

inline double Product(const matrix& a, const matrix& b) {
  double sum = 0;
  for (int32_t i = 0; i < a.mn; ++i) sum += static_cast<double>(a.x[i]) * static_cast<double>(b.x[i]);
  return sum;
}

// The prescribed sum, one operation after the other: eight lanes, the rest in the first, the lanes in order.
inline float PlainDot(const matrix& a, const matrix& b) {
  float lanes[8] = {};
  for (int32_t i = 0; i < a.mn; ++i) {
    const volatile float product = a.x[i] * b.x[i];
    lanes[i < a.mn / 8 * 8 ? i % 8 : 0] += product;
  }
  for (int k = 1; k < 8; ++k) lanes[0] += lanes[k];
  return lanes[0];
}

inline bool SameBits(const matrix& a, const matrix& b) {
  return a.m == b.m && a.n == b.n && (a.mn == 0 || std::memcmp(a.x, b.x, sizeof(float) * a.mn) == 0);
}

// The largest difference; planes of different sizes are very far apart.
inline double Apart(const matrix& a, const matrix& b) {
  double largest = a.m == b.m && a.n == b.n ? 0 : 1e9;
  for (int32_t i = 0; i < std::min(a.mn, b.mn); ++i)
    largest = std::max(largest, std::abs(static_cast<double>(a.x[i]) - static_cast<double>(b.x[i])));
  return largest;
}

}  // namespace norv::test
