#include "kit/measure/quality.h"

#include <array>
#include <limits>
#include <vector>

#include "platform/team.h"
#include "platform/threads/crew.h"
#include "simd/math/math.h"

namespace norv {
namespace {

constexpr int32_t kWindow = 11;
constexpr double kC1 = 0.01 * 255 * 0.01 * 255, kC2 = 0.03 * 255 * 0.03 * 255;

std::array<double, kWindow> GaussianWindow() {
  std::array<double, kWindow> window;
  double sum = 0;
  for (int i = 0; i < kWindow; ++i) {
    const int t = i - kWindow / 2;
    sum += window[i] = Exp(-t * t / (2 * 1.5 * 1.5));
  }
  for (double& weight : window) weight /= sum;
  return window;
}

// Window means of a, b and their products, down the columns or at one place.
struct Moments {
  double a = 0, b = 0, aa = 0, bb = 0, ab = 0;
  void Add(double weight, const Moments& m) {
    a += weight * m.a;
    b += weight * m.b;
    aa += weight * m.aa;
    bb += weight * m.bb;
    ab += weight * m.ab;
  }
};

double Similarity(const Moments& m) {
  const double varianceA = m.aa - m.a * m.a, varianceB = m.bb - m.b * m.b, covariance = m.ab - m.a * m.b;
  return (2 * m.a * m.b + kC1) * (2 * covariance + kC2) /
         ((m.a * m.a + m.b * m.b + kC1) * (varianceA + varianceB + kC2));
}

// The sum of similarities over the windows whose top row is r; columns is scratch.
double RowSimilarity(const matrix& a, const matrix& b, int32_t r, const std::array<double, kWindow>& window,
                     std::vector<Moments>& columns) {
  columns.assign(a.m, {});
  for (int32_t i = 0; i < kWindow; ++i)
    for (int32_t x = 0; x < a.m; ++x) {
      const double u = a.z[r + i][x], v = b.z[r + i][x];
      columns[x].Add(window[i], {u, v, u * u, v * v, u * v});
    }
  double sum = 0;
  for (int32_t x = 0; x + kWindow <= a.m; ++x) {
    Moments m;
    for (int32_t i = 0; i < kWindow; ++i) m.Add(window[i], columns[x + i]);
    sum += Similarity(m);
  }
  return sum;
}

}  // namespace

matrix WithoutBorder(const matrix& plane, int32_t border) {
  if (plane.m <= 2 * int64_t{border} || plane.n <= 2 * int64_t{border}) return matrix();
  matrix inner(plane.m - 2 * border, plane.n - 2 * border);
  for (int32_t r = 0; r < inner.n; ++r)
    for (int32_t x = 0; x < inner.m; ++x) inner.z[r][x] = plane.z[r + border][x + border];
  return inner;
}

double Psnr(const matrix& a, const matrix& b) {
  double sum = 0;
  for (int32_t i = 0; i < a.mn; ++i) {
    const double difference = static_cast<double>(a.x[i]) - b.x[i];
    sum += difference * difference;
  }
  if (sum == 0) return std::numeric_limits<double>::infinity();
  return 10 / Log(10) * Log(255.0 * 255.0 / (sum / a.mn));
}

double Ssim(const matrix& a, const matrix& b) {
  const int32_t rows = a.n - kWindow + 1, columns = a.m - kWindow + 1;
  if (rows <= 0 || columns <= 0) return std::numeric_limits<double>::quiet_NaN();
  const std::array<double, kWindow> window = GaussianWindow();
  std::vector<double> sums(rows);
  ParallelRanges(UsualThreads(), rows, [&](int64_t begin, int64_t end) {
    std::vector<Moments> scratch;
    for (int64_t r = begin; r < end; ++r) sums[r] = RowSimilarity(a, b, static_cast<int32_t>(r), window, scratch);
  });
  double sum = 0;
  for (const double row : sums) sum += row;
  return sum / (static_cast<double>(rows) * columns);
}

}  // namespace norv
