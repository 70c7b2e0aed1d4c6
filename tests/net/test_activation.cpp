// The table of activation kinds against the formulas as they are written down, with the C library's functions.
#include <random>

#include "net/activation.h"
#include "simd/evaluate/kernels.h"
#include "support/plain_activation.h"
#include "support/test.h"

TEST_CASE("every kind has the formula's single-precision results, at its ends too") {
  const float infinity = std::numeric_limits<float>::infinity();
  // On purpose exp may overflow on the way.
  const std::vector<float> ends = {infinity, -infinity, std::nanf(""), 0.0f, -0.0f, 710, -710};
  std::mt19937 random(5);
  for (int32_t kind = 1; kind < kActivationKinds; ++kind) {
    int different = 0;
    for (size_t i = 0; i < 300000; ++i) {
      // Half of them of any exponent, half where the functions bend.
      const auto bits = static_cast<uint32_t>(random());
      float x = static_cast<float>(static_cast<int32_t>(bits)) * 0x1p-26f;
      if (i % 2) std::memcpy(&x, &bits, sizeof x);
      if (i < ends.size()) x = ends[i];
      const float got = static_cast<float>(ActivationOf(kind).f(x)),
                  want = static_cast<float>(PlainActivation(kind, x));
      different += std::memcmp(&got, &want, sizeof x) != 0 && !(std::isnan(got) && std::isnan(want));
    }
    CHECK_MESSAGE(different == 0, "kind ", kind);
  }
  // The logistic function keeps the whole range of doubles, far below what a float can show.
  for (const double x : {-200.0, -708.0, -709.7})
    CHECK(ActivationOf(1).f(x) / PlainActivation(1, x) == doctest::Approx(1).epsilon(1e-14));
  CHECK(ActivationOf(1).f(-709.9) == 0);
}

TEST_CASE("derivatives are those of the functions") {
  for (int32_t kind = 1; kind < kActivationKinds; ++kind)
    for (double x = -7.3; x < 8; x += 0.37) {
      const double step = 1e-4;
      const double slope = (ActivationOf(kind).f(x + step) - ActivationOf(kind).f(x - step)) / (2 * step);
      CHECK_MESSAGE(ActivationOf(kind).df(x) == doctest::Approx(slope).epsilon(1e-6), "kind ", kind, " at ", x);
    }
}
