// Filters and their taps.
#include <cmath>
#include <doctest/doctest.h>
#include <vector>

#include "raster/filters.h"

using namespace norv;

namespace {

std::vector<float> Taps(int32_t f, int32_t order) {
  matrix kernel;
  ShrinkKernel(kernel, f, order);
  return {kernel.x, kernel.x + kernel.mn};
}

const std::vector<int32_t> kOrders = {0,   1,   2,   3,   5,   64,  -1,  -2,  -3,  -4,  -5, -11,
                                      -12, -13, -14, -15, -16, -17, -18, -19, -20, -21, -22};

}  // namespace

TEST_CASE("taps sum to 1, are symmetric and have the factor's parity, for every order and factor") {
  for (const int32_t order : kOrders)
    for (const int32_t f : {1, 2, 3, 4, 5, 8}) {
      const std::vector<float> taps = Taps(f, order);
      CAPTURE(order);
      CAPTURE(f);
      REQUIRE(taps.size() > 0);
      CHECK(taps.size() % 2 == static_cast<size_t>(f % 2));
      double sum = 0;
      for (size_t i = 0; i < taps.size(); ++i) {
        sum += static_cast<double>(taps[i]);
        CHECK(taps[i] == taps[taps.size() - 1 - i]);
      }
      CHECK(sum == doctest::Approx(1).epsilon(1e-6));
    }
}

TEST_CASE("known taps: box, tent, cubic") {
  CHECK(Taps(2, 0) == std::vector<float>{0.5f, 0.5f});
  CHECK(Taps(2, 1) == std::vector<float>{0.125f, 0.375f, 0.375f, 0.125f});
  CHECK(Taps(1, 1) == std::vector<float>{1});
  // p = -0.5 at distances 1/4, 3/4, 5/4, 7/4, by hand: 111, 29, -9, -3 over 128.
  CHECK(Taps(2, -1) == std::vector<float>{-3 / 256.0f, -9 / 256.0f, 29 / 256.0f, 111 / 256.0f, 111 / 256.0f,
                                          29 / 256.0f, -9 / 256.0f, -3 / 256.0f});
  CHECK(Taps(4, 3).size() == 24);
  CHECK(Taps(3, 3).size() == 17);
}

TEST_CASE("Gaussian widths: a tenth a code from -11 on, but -21 and -22 are narrow ones on purpose") {
  const auto ratio = [](int32_t order) {
    const std::vector<float> taps = Taps(8, order);
    return std::log(static_cast<double>(taps[taps.size() / 2 - 1] / taps[taps.size() / 2 - 2]));
  };
  // Neighbours at distances 1/16 and 3/16: the exponent is (9 - 1) / 256 / (2 sigma^2).
  for (const auto& [order, sigma] : {std::pair{-15, 0.5}, {-20, 1.0}, {-21, 0.25}, {-22, 0.35}})
    CHECK(ratio(order) == doctest::Approx(8 / 256.0 / (2 * sigma * sigma)).epsilon(1e-4));
  CHECK(Taps(2, -20).size() == 12);
  CHECK(Taps(3, -20).size() == 19);
}

TEST_CASE("codes without a filter, and the two families' own codes") {
  for (const int32_t order : {-6, -10, -23, 65}) CHECK(Taps(2, order).empty());
  for (const int32_t code : {-36, -30, -23, -10, -6, 6, 14, 16}) CHECK_FALSE(FilterOfKernelCode(code).has_value());
  for (const int32_t code : {-31, -32, -33, -34, -35, -22, -11, -5, -1, 0, 1, 2, 5, 15})
    CHECK(FilterOfKernelCode(code).has_value());
  CHECK(FilterOfKernelCode(-35)->parameter == doctest::Approx(1.5));
  CHECK(FilterOfKernelCode(-31)->parameter == doctest::Approx(1.1));
  CHECK(FilterOfKernelCode(-3)->parameter == 0);
  CHECK(FilterOfKernelCode(15)->parameter == 15);
}

TEST_CASE("the Lanczos kernel") {
  CHECK(LanczosKernel(0, 3) == 1);
  CHECK(LanczosKernel(3, 3) == 0);
  CHECK(LanczosKernel(-3.5, 3) == 0);
  CHECK(std::abs(LanczosKernel(2, 3)) < 1e-15);
  // sinc(1/2) sinc(1/6) = (2 / pi) (3 / pi)
  CHECK(LanczosKernel(-0.5, 3) == doctest::Approx(6 / (3.141592653589793 * 3.141592653589793)));
}
