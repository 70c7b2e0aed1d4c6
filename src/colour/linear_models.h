// Colour models that are a scalar map of each channel and then a 3 x 3 matrix; the way back is the matrix's exact
// numeric inverse and then the inverse map. All arithmetic is in double precision. Included by models.cpp only.
#pragma once

#include <algorithm>
#include <limits>

#include "simd/math/math.h"

namespace norv {

// Rounds to single precision; what is too large for it becomes the largest finite value.
inline float Narrow(double value) {
  constexpr double kLargest = std::numeric_limits<float>::max();
  return static_cast<float>(std::min(std::max(value, -kLargest), kLargest));
}

struct Matrix3 {
  double row[3][3];
};

constexpr double Cofactor(const Matrix3& a, int r, int c) {
  const int r1 = (r + 1) % 3, r2 = (r + 2) % 3, c1 = (c + 1) % 3, c2 = (c + 2) % 3;
  return a.row[r1][c1] * a.row[r2][c2] - a.row[r1][c2] * a.row[r2][c1];
}

constexpr Matrix3 Inverse(const Matrix3& a) {
  const double determinant =
      a.row[0][0] * Cofactor(a, 0, 0) + a.row[0][1] * Cofactor(a, 0, 1) + a.row[0][2] * Cofactor(a, 0, 2);
  Matrix3 inverse = {};
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c) inverse.row[r][c] = Cofactor(a, c, r) / determinant;
  return inverse;
}

constexpr double Apply(const double (&row)[3], double a, double b, double c) {
  return row[0] * a + row[1] * b + row[2] * c;
}

inline constexpr double kThird = 1.0 / 3.0;
inline constexpr Matrix3 kUnitMatrix = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
// Full-range ITU-R BT.601, no offset of 128 on the differences.
inline constexpr Matrix3 kYCbCr = {{{0.299, 0.587, 0.114}, {-0.1687, -0.3313, 0.5}, {0.5, -0.4187, -0.0813}}};
inline constexpr Matrix3 kYuv = {{{0.299, 0.587, 0.114}, {-0.14713, -0.28886, 0.436}, {0.615, -0.51499, -0.10001}}};
// Mean, red less mean, blue less mean.
inline constexpr Matrix3 kMean = {
    {{kThird, kThird, kThird}, {1 - kThird, -kThird, -kThird}, {-kThird, -kThird, 1 - kThird}}};

// A scalar map takes a channel to double precision and what comes back to a channel.
struct Plain {
  static double To(float v) { return v; }
  static float From(double v) { return static_cast<float>(v); }
};

// Logarithms of v + 0.001; negative v count as 0, for they have none.
struct Logarithm {
  static double To(float v) { return Log(std::max(static_cast<double>(v), 0.0) + 0.001); }
  static float From(double v) { return Narrow(Exp(v) - 0.001); }
};

struct SingleLogarithm {
  static double To(float v) { return Log(std::max(v, 0.0f) + 0.001f); }
  static float From(double v) { return Narrow(Exp(v) - 0.001f); }
};

// Reaches 255 at 255.
struct ScaledLogarithm {
  static constexpr double kLog255 = 5.5412674;
  static double To(float v) { return 255 * Logarithm::To(v) / kLog255; }
  static float From(double v) { return Logarithm::From(v * kLog255 / 255); }
};

template <typename Map, const Matrix3& matrix>
struct LinearModel {
  static constexpr Matrix3 kInverse = Inverse(matrix);
  static float* To(float* destination, const float* source) {
    const double r = Map::To(source[0]), g = Map::To(source[1]), b = Map::To(source[2]);
    for (int k = 0; k < 3; ++k) destination[k] = static_cast<float>(Apply(matrix.row[k], r, g, b));
    return destination;
  }
  static float* From(float* destination, const float* source) {
    const double a = source[0], b = source[1], c = source[2];
    for (int k = 0; k < 3; ++k) destination[k] = Map::From(Apply(kInverse.row[k], a, b, c));
    return destination;
  }
};

// The map alone.
template <typename Map>
struct ScalarModel {
  static float* To(float* destination, const float* source) {
    for (int k = 0; k < 3; ++k) destination[k] = static_cast<float>(Map::To(source[k]));
    return destination;
  }
  static float* From(float* destination, const float* source) {
    for (int k = 0; k < 3; ++k) destination[k] = Map::From(source[k]);
    return destination;
  }
};

struct Identity {
  static float* To(float* destination, const float* source) {
    std::copy_n(source, 3, destination);
    return destination;
  }
  static float* From(float* destination, const float* source) { return To(destination, source); }
};

struct Inversion {
  static float* To(float* destination, const float* source) {
    for (int k = 0; k < 3; ++k) destination[k] = 255.0f - source[k];
    return destination;
  }
  static float* From(float* destination, const float* source) { return To(destination, source); }
};

}  // namespace norv
