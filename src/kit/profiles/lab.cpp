#include "kit/profiles/lab.h"

#include <cmath>

namespace norv {
namespace {

using Matrix3 = std::array<double, 9>;
using Vector3 = std::array<double, 3>;

constexpr Matrix3 kBradford = {0.8951, 0.2664, -0.1614, -0.7502, 1.7135, 0.0367, 0.0389, -0.0685, 1.0296};
constexpr Matrix3 kBradfordBack = {0.9869929, -0.1470543, 0.1599627, 0.4323053, 0.5183603,
                                   0.0492912, -0.0085287, 0.0400428, 0.9684867};
constexpr Matrix3 kXyzToLinear = {3.2404542, -1.5371385, -0.4985314, -0.9692660, 1.8760108,
                                  0.0415560, 0.0556434,  -0.2040259, 1.0572252};
constexpr Vector3 kD50 = {0.96422, 1, 0.82521}, kD65 = {0.95047, 1, 1.08883};

Matrix3 Product(const Matrix3& a, const Matrix3& b) {
  Matrix3 product = {};
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c)
      for (int k = 0; k < 3; ++k) product[3 * r + c] += a[3 * r + k] * b[3 * k + c];
  return product;
}

Vector3 Applied(const Matrix3& m, const Vector3& v) {
  Vector3 result;
  for (int r = 0; r < 3; ++r) result[r] = m[3 * r] * v[0] + m[3 * r + 1] * v[1] + m[3 * r + 2] * v[2];
  return result;
}

Matrix3 Diagonal(const Vector3& v) { return {v[0], 0, 0, 0, v[1], 0, 0, 0, v[2]}; }

// The inverse of L*a*b*'s cube root with its straight foot.
double Cubed(double t) { return t > 6.0 / 29 ? t * t * t : 108.0 / 841 * (t - 4.0 / 29); }

}  // namespace

std::array<double, 9> LabMatrix(const std::optional<std::array<double, 2>>& white) {
  Vector3 from = kD50;
  if (white) {
    const auto [x, y] = *white;
    // Every daylight and every lamp; false for a NaN.
    if (x > 0.2 && x < 0.6 && y > 0.2 && y < 0.6 && x + y < 0.95) from = {x / y, 1, (1 - x - y) / y};
  }
  const Vector3 cones = Applied(kBradford, from), wanted = Applied(kBradford, kD65);
  const Matrix3 gains = Diagonal({wanted[0] / cones[0], wanted[1] / cones[1], wanted[2] / cones[2]});
  const Matrix3 adapt = Product(kBradfordBack, Product(gains, kBradford));
  return Product(kXyzToLinear, Product(adapt, Diagonal(from)));
}

void LabToSrgb(const float* lab, const std::array<double, 9>& matrix, float* rgb) {
  const double y = (double{lab[0]} + 16) / 116;
  const Vector3 linear = Applied(matrix, {Cubed(y + lab[1] / 500.0), Cubed(y), Cubed(y - lab[2] / 200.0)});
  for (int k = 0; k < 3; ++k)
    rgb[k] =
        static_cast<float>(linear[k] <= 0.0031308 ? 12.92 * linear[k] : 1.055 * std::pow(linear[k], 1 / 2.4) - 0.055);
}

}  // namespace norv
