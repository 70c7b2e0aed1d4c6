// PSNR and SSIM against their definitions written down a second way.
#include <cmath>
#include <doctest/doctest.h>

#include "kit/measure/quality.h"

using namespace norv;

namespace {

matrix Waves(int32_t width, int32_t height, double shift) {
  matrix plane(width, height);
  for (int32_t r = 0; r < height; ++r)
    for (int32_t x = 0; x < width; ++x)
      plane.z[r][x] =
          static_cast<float>(120 + 80 * std::sin(0.5 * x + shift) * std::cos(0.3 * r) + 9 * std::sin(shift * r * x));
  return plane;
}

// One window by the definition: weighted means first, then weighted squares of what remains.
double WindowSimilarity(const matrix& a, const matrix& b, int32_t top, int32_t left) {
  double sum = 0, meanA = 0, meanB = 0, varianceA = 0, varianceB = 0, covariance = 0;
  const auto each = [&](const auto& visit) {
    for (int i = 0; i < 11; ++i)
      for (int j = 0; j < 11; ++j)
        visit(std::exp(-((i - 5) * (i - 5) + (j - 5) * (j - 5)) / 4.5), a.z[top + i][left + j], b.z[top + i][left + j]);
  };
  each([&](double w, double u, double v) { sum += w, meanA += w * u, meanB += w * v; });
  meanA /= sum;
  meanB /= sum;
  each([&](double w, double u, double v) {
    varianceA += w / sum * (u - meanA) * (u - meanA);
    varianceB += w / sum * (v - meanB) * (v - meanB);
    covariance += w / sum * (u - meanA) * (v - meanB);
  });
  const double luminance = (2 * meanA * meanB + 6.5025) / (meanA * meanA + meanB * meanB + 6.5025);
  return luminance * (2 * covariance + 58.5225) / (varianceA + varianceB + 58.5225);
}

}  // namespace

TEST_CASE("structural similarity is the mean over all windows inside") {
  const matrix a = Waves(23, 17, 0.1), b = Waves(23, 17, 0.4);
  double sum = 0;
  for (int32_t r = 0; r <= 17 - 11; ++r)
    for (int32_t x = 0; x <= 23 - 11; ++x) sum += WindowSimilarity(a, b, r, x);
  CHECK(Ssim(a, b) == doctest::Approx(sum / (7 * 13)).epsilon(1e-9));
  CHECK(Ssim(a, a) == doctest::Approx(1).epsilon(1e-12));
  CHECK(std::isnan(Ssim(Waves(10, 30, 0), Waves(10, 30, 1))));
}

TEST_CASE("the signal-to-noise ratio of a constant error is 20 log10 (255 / error)") {
  const matrix a = Waves(9, 8, 0);
  matrix b = a;
  b.addscalar(4);
  CHECK(Psnr(a, b) == doctest::Approx(20 * std::log10(255.0 / 4)).epsilon(1e-6));
  CHECK(std::isinf(Psnr(a, a)));
}

TEST_CASE("the border is left out on every side") {
  const matrix plane = Waves(9, 8, 0), inner = WithoutBorder(plane, 3);
  CHECK((inner.m == 3 && inner.n == 2));
  CHECK(inner.z[1][2] == plane.z[4][5]);
  CHECK(WithoutBorder(plane, 4).mn == 0);
  CHECK(WithoutBorder(plane, INT32_MAX).mn == 0);
}
