// Filters and their taps.
#include "raster/filters.h"
#include "support/test.h"

namespace {

std::vector<float> Taps(int32_t f, int32_t order) {
  matrix kernel;
  ShrinkKernel(kernel, f, order);
  return {kernel.x, kernel.x + kernel.mn};
}

}  // namespace

TEST_CASE("taps sum to 1, are symmetric and have the factor's parity, for every order and factor") {
  for (int32_t order = -22; order <= 64; ++order)
    for (const int32_t f : {1, 2, 3, 4, 5, 8}) {
      const std::vector<float> taps = Taps(f, order);
      INFO(order, " ", f);
      const bool without = order < -5 && order > -11;
      REQUIRE(taps.empty() == without);
      if (without) continue;
      CHECK(taps.size() % 2 == static_cast<size_t>(f % 2));
      CHECK(std::equal(taps.begin(), taps.end(), taps.rbegin()));
      CHECK(std::accumulate(taps.begin(), taps.end(), 0.0) == doctest::Approx(1).epsilon(1e-6));
    }
}

TEST_CASE("known taps: box, tent, cubic, Gaussian, Lanczos") {
  CHECK(Taps(2, 0) == std::vector<float>{0.5f, 0.5f});
  CHECK(Taps(2, 1) == std::vector<float>{0.125f, 0.375f, 0.375f, 0.125f});
  CHECK(Taps(1, 1) == std::vector<float>{1});
  // p = -0.5 at distances 1/4, 3/4, 5/4, 7/4, by hand: 111, 29, -9, -3 over 128.
  CHECK(Taps(2, -1) == std::vector<float>{-3 / 256.0f, -9 / 256.0f, 29 / 256.0f, 111 / 256.0f, 111 / 256.0f,
                                          29 / 256.0f, -9 / 256.0f, -3 / 256.0f});
  // A Gaussian's neighbours at distances 1/16 and 3/16: the exponent is (9 - 1) / 256 / (2 sigma^2).
  const std::vector<float> taps = Taps(8, -15);
  const double ratio = static_cast<double>(taps[taps.size() / 2 - 1] / taps[taps.size() / 2 - 2]);
  CHECK(std::log(ratio) == doctest::Approx(8 / 256.0 / (2 * 0.5 * 0.5)).epsilon(1e-4));
  CHECK((LanczosKernel(0, 3) == 1 && LanczosKernel(3, 3) == 0 && LanczosKernel(-3.5, 3) == 0));
  CHECK(std::abs(LanczosKernel(2, 3)) < 1e-15);
  // sinc(1/2) sinc(1/6) = (2 / pi) (3 / pi)
  CHECK(LanczosKernel(-0.5, 3) == doctest::Approx(6 / (3.141592653589793 * 3.141592653589793)));
  CHECK((Taps(4, 3).size() == 24 && Taps(3, 3).size() == 17));
  CHECK((Taps(2, -20).size() == 12 && Taps(3, -20).size() == 19));
}

TEST_CASE("codes and parameters: -21 and -22 are narrow Gaussians on purpose, 15 and below -30 are of one family") {
  const auto parameter = [](int32_t code) { return FilterOfKernelCode(code).value().parameter; };
  const double cubic[] = {-0.5, -1, 0, -1.5, -2};
  for (int k = 0; k < 5; ++k) {
    CHECK(parameter(-1 - k) == cubic[k]);
    CHECK(parameter(-31 - k) == doctest::Approx(1.1 + 0.1 * k).epsilon(1e-6));
    CHECK(parameter(k < 4 ? 2 + k : 15) == (k < 4 ? 2 + k : 15));
  }
  for (int k = 1; k <= 10; ++k) CHECK(parameter(-10 - k) == doctest::Approx(0.1 * k).epsilon(1e-6));
  CHECK((parameter(-21) == 0.25 && parameter(-22) == static_cast<double>(0.35f)));
  for (const int32_t order : {-36, -31, -23, 65}) CHECK_FALSE(FilterOfShrinkOrder(order).has_value());
  for (const int32_t code : {-36, -30, -23, -10, -6, 6, 14, 16}) CHECK_FALSE(FilterOfKernelCode(code).has_value());
}
