#include "colour/models.h"

namespace norv {
namespace {

float* Identity(float* destination, const float* source) {
  for (int k = 0; k < 3; ++k) destination[k] = source[k];
  return destination;
}

float* Invert(float* destination, const float* source) {
  for (int k = 0; k < 3; ++k) destination[k] = 255.0f - source[k];
  return destination;
}

float* AddFourth(float* destination, const float* source) {
  Identity(destination, source);
  destination[3] = 255.0f;
  return destination;
}

// Full-range ITU-R BT.601 without an offset of the differences. The parentheses are the order of additions.
float* ToLuminance(float* destination, const float* source) {
  const double r = source[0], g = source[1], b = source[2];
  destination[0] = static_cast<float>(0.299 * r + 0.587 * g + 0.114 * b);
  destination[1] = static_cast<float>(0.5 * b - (0.1687 * r + 0.3313 * g));
  destination[2] = static_cast<float>(0.5 * r - 0.4187 * g - 0.0813 * b);
  return destination;
}

struct Matrix3 {
  double row[3][3];
};

constexpr Matrix3 kLuminanceMatrix = {{{0.299, 0.587, 0.114}, {-0.1687, -0.3313, 0.5}, {0.5, -0.4187, -0.0813}}};

constexpr double Minor(const Matrix3& a, int r, int c) {
  const int r1 = (r + 1) % 3, r2 = (r + 2) % 3, c1 = (c + 1) % 3, c2 = (c + 2) % 3;
  return a.row[r1][c1] * a.row[r2][c2] - a.row[r1][c2] * a.row[r2][c1];
}

constexpr Matrix3 Inverse(const Matrix3& a) {
  const double determinant = a.row[0][0] * Minor(a, 0, 0) + a.row[0][1] * Minor(a, 0, 1) + a.row[0][2] * Minor(a, 0, 2);
  Matrix3 inverse = {};
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c) inverse.row[r][c] = Minor(a, c, r) / determinant;
  return inverse;
}

float* FromLuminance(float* destination, const float* source) {
  static constexpr Matrix3 kInverse = Inverse(kLuminanceMatrix);
  const double y = source[0], cb = source[1], cr = source[2];
  for (int k = 0; k < 3; ++k) {
    const double* row = kInverse.row[k];
    destination[k] = static_cast<float>(row[0] * y + row[1] * cb + row[2] * cr);
  }
  return destination;
}

constexpr ColourModel kModels[] = {
    {0x10, 3, Identity, Identity},     {0x1000, 3, Invert, Invert},
    {0x2000, 4, AddFourth, Identity},  {0x20000, 3, ToLuminance, FromLuminance},
    {0x100000, 3, Identity, Identity}, {0x200000, 3, ToLuminance, FromLuminance},
};

}  // namespace

const ColourModel* FindModel(int32_t format) {
  for (const ColourModel& model : kModels)
    if (model.code == ModelOf(format)) return &model;
  return nullptr;
}

}  // namespace norv
