#include "numeric/symmetric.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace norv {
namespace {

constexpr int kMostIterations = 30;

typedef double Four __attribute__((vector_size(32)));
typedef double FourAnywhere __attribute__((vector_size(32), aligned(8), may_alias));

// Four partial sums, then the rest into the first of them: one order at every vector width.
double Dot(const double* x, const double* y, int32_t n) {
  Four sum = {};
  int32_t i = 0;
  for (; i + 4 <= n; i += 4)
    sum += *reinterpret_cast<const FourAnywhere*>(x + i) * *reinterpret_cast<const FourAnywhere*>(y + i);
  double s = sum[0];
  for (; i < n; ++i) s += x[i] * y[i];
  return s + sum[1] + sum[2] + sum[3];
}

// y += s * x
void AddScaled(double* __restrict y, double s, const double* __restrict x, int32_t n) {
  for (int32_t i = 0; i < n; ++i) y[i] += s * x[i];
}

// The plane rotations of one sweep, last column pair first: pair k turns columns high - k - 1 and high - k.
struct Sweep {
  std::vector<double> cosine, sine;
};

// Reduces a to the diagonals d and e (e[i] beside d[i] and d[i + 1]); the reflectors I - v v^T / scale stay in a's
// columns below the first subdiagonal place, their scales in `scale` (0: none).
void Tridiagonalise(int32_t n, double* a, double* d, double* e, double* scale) {
  std::vector<double> w(static_cast<size_t>(n));
  for (int32_t k = 0; k + 1 < n; ++k) {
    double* v = a + int64_t{n} * k + k + 1;
    const int32_t m = n - k - 1;
    d[k] = v[-1];
    const double square = Dot(v, v, m), length = std::sqrt(square);
    e[k] = v[0] > 0 ? -length : length;
    scale[k] = square - v[0] * e[k];
    if (m == 1) e[k] = v[0];
    if (m == 1 || scale[k] == 0) {
      scale[k] = 0;
      continue;
    }
    v[0] -= e[k];
    double* rest = a + (int64_t{n} + 1) * (k + 1);
    for (int32_t j = 0; j < m; ++j) w[j] = 0;
    for (int32_t j = 0; j < m; ++j) AddScaled(w.data(), v[j] / scale[k], rest + int64_t{n} * j, m);
    AddScaled(w.data(), -Dot(v, w.data(), m) / (2 * scale[k]), v, m);
    for (int32_t j = 0; j < m; ++j) {
      AddScaled(rest + int64_t{n} * j, -w[j], v, m);
      AddScaled(rest + int64_t{n} * j, -v[j], w.data(), m);
    }
  }
  d[n - 1] = a[int64_t{n} * n - 1];
}

// The product of the reflectors in a's place.
void FormReflectors(int32_t n, double* a, const double* scale) {
  std::vector<double> v;
  for (int32_t k = n - 1; k >= 0; --k) {
    // Column k of the product is a unit vector above; the reflector of column k - 1 reaches rows and columns from k on.
    double* column = a + int64_t{n} * k;
    const int32_t m = n - k;
    if (k > 0) v.assign(column - n + k, column);
    for (int32_t i = 0; i < n; ++i) column[i] = i == k;
    if (k == 0 || scale[k - 1] == 0) continue;
    for (int32_t j = k; j < n; ++j) {
      double* target = a + int64_t{n} * j + k;
      AddScaled(target, -Dot(v.data(), target, m) / scale[k - 1], v.data(), m);
    }
  }
}

// Turns the columns low .. high of a by a sweep's rotations, a strip of rows at a time, so that the column that two
// rotations share stays in registers. Returns the first row that is left.
template <typename Strip>
int32_t TurnStrips(int32_t row, int32_t n, double* a, int32_t low, int32_t high, const Sweep& sweep) {
  constexpr int32_t kRows = sizeof(Strip) / sizeof(double);
  for (; row + kRows <= n; row += kRows) {
    double* column = a + int64_t{n} * high + row;
    Strip left, right;
    std::memcpy(&right, column, sizeof right);
    for (int32_t k = 0; k < high - low; ++k, column -= n) {
      const double c = sweep.cosine[k], s = sweep.sine[k];
      std::memcpy(&left, column - n, sizeof left);
      const Strip turned = s * left + c * right;
      std::memcpy(column, &turned, sizeof turned);
      right = c * left - s * right;
    }
    std::memcpy(column, &right, sizeof right);
  }
  return row;
}

void TurnColumns(int32_t n, double* a, int32_t low, int32_t high, const Sweep& sweep) {
  const int32_t row = TurnStrips<Four>(0, n, a, low, high, sweep);
  TurnStrips<double>(row, n, a, low, high, sweep);
}

// One QL sweep over d[low .. high] with an implicit shift, its rotations into `sweep`. Returns the column down to which
// they reach: low, or above it when the matrix fell apart on the way.
int32_t RotateDiagonals(double* d, double* e, int32_t low, int32_t high, Sweep& sweep) {
  double g = (d[low + 1] - d[low]) / (2 * e[low]);
  const double hypotenuse = std::sqrt(g * g + 1);
  g = d[high] - d[low] + e[low] / (g + (g < 0 ? -hypotenuse : hypotenuse));
  double s = 1, c = 1, p = 0;
  for (int32_t i = high - 1; i >= low; --i) {
    const double f = s * e[i], b = c * e[i], r = std::sqrt(f * f + g * g);
    e[i + 1] = i + 1 < high ? r : 0;
    if (r == 0) {
      d[i + 1] -= p;
      return i + 1;
    }
    s = f / r;
    c = g / r;
    g = d[i + 1] - p;
    const double t = (d[i] - g) * s + 2 * c * b;
    p = s * t;
    d[i + 1] = g + p;
    g = c * t - b;
    sweep.cosine[high - 1 - i] = c;
    sweep.sine[high - 1 - i] = s;
  }
  d[low] -= p;
  e[low] = g;
  return low;
}

double LargestMagnitude(const double* d, const double* e, int32_t n) {
  double largest = 0;
  for (int32_t i = 0; i < n; ++i) largest = std::max(largest, std::max(std::abs(d[i]), std::abs(e[i])));
  return largest;
}

}  // namespace

bool DecomposeSymmetric(int32_t n, double* a, double* values) {
  if (n <= 0) return true;
  std::vector<double> e(static_cast<size_t>(n)), scale(static_cast<size_t>(n));
  double* d = values;
  Tridiagonalise(n, a, d, e.data(), scale.data());
  FormReflectors(n, a, scale.data());
  e[n - 1] = 0;
  Sweep sweep{std::vector<double>(static_cast<size_t>(n)), std::vector<double>(static_cast<size_t>(n))};
  constexpr double epsilon = std::numeric_limits<double>::epsilon();
  const double floor = LargestMagnitude(d, e.data(), n) * epsilon / 2;
  bool settled = true;
  for (int32_t low = 0; low < n; ++low) {
    for (int iteration = 0;; ++iteration) {
      int32_t high = low;
      while (high + 1 < n && std::abs(e[high]) > floor + epsilon * (std::abs(d[high]) + std::abs(d[high + 1]))) ++high;
      if (high == low) break;
      if (iteration == kMostIterations) {
        settled = false;
        break;
      }
      const int32_t reached = RotateDiagonals(d, e.data(), low, high, sweep);
      TurnColumns(n, a, reached, high, sweep);
    }
  }
  return settled;
}

}  // namespace norv
