// Our elementary functions against the C library's in extended precision.
#include <random>
#include <tuple>
#include <type_traits>

#include "simd/math/math.h"
#include "support/test.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The distance in units of the last place of a double.
double Error(double got, long double want) {
  const double rounded = static_cast<double>(want);
  if (std::isnan(rounded) || std::isnan(got)) return std::isnan(rounded) && std::isnan(got) ? 0 : kInfinity;
  if (rounded == 0 || std::isinf(rounded) || std::isinf(got)) return got == rounded ? 0 : kInfinity;
  const int exponent = std::max(std::ilogb(want), -1022);
  return static_cast<double>(std::fabs(got - want) / std::ldexp(1.0L, exponent - 52));
}

class Arguments {
 public:
  double Uniform(double low, double high) { return std::uniform_real_distribution<double>(low, high)(random_); }
  // Of either sign, magnitudes from 2^low to 2^high.
  double Wide(double low, double high) { return std::exp2(Uniform(low, high)) * (random_() % 2 ? 1 : -1); }

 private:
  std::mt19937_64 random_{7};
};

// Of a function of one argument or two.
template <typename... X, typename Draw>
double WorstError(double (*function)(X...), long double (*reference)(std::conditional_t<true, long double, X>...),
                  Draw draw) {
  double worst = 0;
  for (int i = 0; i < 100000; ++i) {
    const std::tuple<X...> x{static_cast<X>(draw())...};
    worst = std::max(worst, Error(std::apply(function, x), std::apply(reference, x)));
  }
  return worst;
}

// As near as elsewhere; zeros, infinities and NaN exactly.
bool IsRight(double got, long double want) {
  const double rounded = static_cast<double>(want);
  if (rounded != 0 && std::isfinite(rounded)) return Error(got, want) < 0.85;
  return (std::isnan(rounded) && std::isnan(got)) || (got == rounded && std::signbit(got) == std::signbit(rounded));
}

}  // namespace

TEST_CASE("elementary functions are accurate to 0.85 units in the last place") {
  Arguments any;
  const double limit = 0.85;
  CHECK(WorstError(Exp, expl, [&] { return any.Uniform(-746, 710); }) < limit);
  CHECK(WorstError(Exp, expl, [&] { return any.Wide(-60, 1); }) < limit);
  CHECK(WorstError(Log, logl, [&] { return std::fabs(any.Wide(-1074, 1024)); }) < limit);
  CHECK(WorstError(Log, logl, [&] { return 1 + any.Wide(-52, -1); }) < limit);
  CHECK(WorstError(Atan, atanl, [&] { return any.Wide(-3, 3); }) < limit);
  CHECK(WorstError(Atan, atanl, [&] { return any.Wide(-1074, 1024); }) < limit);
  CHECK(WorstError(Acos, acosl, [&] { return any.Uniform(-1, 1); }) < limit);
  CHECK(WorstError(Acos, acosl, [&] { return 1 - std::fabs(any.Wide(-52, -1)); }) < limit);
  for (const auto& [function, reference] : {std::pair{&Sin, &sinl}, std::pair{&Cos, &cosl}}) {
    CHECK(WorstError(function, reference, [&] { return any.Uniform(-1000, 1000); }) < limit);
    CHECK(WorstError(function, reference, [&] { return any.Wide(-1074, 1024); }) < limit);
  }
  CHECK(WorstError(Atan2, atan2l, [&] { return any.Wide(-4, 4); }) < limit);
  CHECK(WorstError(Atan2, atan2l, [&] { return any.Wide(-1074, 1024); }) < limit);
  CHECK(WorstError(Pow, powl, [&] { return std::fabs(any.Wide(-8, 8)); }) < limit);
  CHECK(WorstError(Pow, powl, [&] { return std::fabs(any.Wide(-1074, 8)); }) < limit);
}

TEST_CASE("multiples of a quarter turn, as near as doubles come") {
  for (int k = 1; k < 20000; ++k) {
    const double x = k * 1.5707963267948966;
    CHECK(Error(Sin(x), sinl(x)) < 0.85);
    CHECK(Error(Cos(x), cosl(x)) < 0.85);
  }
  // The double that comes nearest to a multiple of a quarter turn of all.
  CHECK(Error(Cos(0x1.6ac5b262ca1ffp+849), cosl(0x1.6ac5b262ca1ffp+849L)) < 0.85);
}

TEST_CASE("zeros, infinities and NaN") {
  const double nan = std::nan("");
  const double values[] = {0.0, -0.0, 1.0, -1.0, -2.5, kInfinity, -kInfinity, nan, 5e-324, 1e308, 709.79, 1 + 0x1p-52};
  for (const double x : values) {
    CAPTURE(x);
    for (const auto& [function, reference] : {std::pair{&Exp, &expl}, std::pair{&Log, &logl}, std::pair{&Atan, &atanl},
                                              std::pair{&Acos, &acosl}, std::pair{&Sin, &sinl}, std::pair{&Cos, &cosl}})
      CHECK(IsRight(function(x), reference(x)));
    for (const double y : values) {
      CAPTURE(y);
      CHECK(IsRight(Atan2(y, x), atan2l(y, x)));
      if (!(x < 0)) CHECK(IsRight(Pow(std::fabs(x), y), powl(std::fabs(x), y)));
    }
  }
  CHECK(std::isnan(Pow(-1, 2)));
}
