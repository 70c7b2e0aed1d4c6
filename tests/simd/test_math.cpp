// Our elementary functions against the C library's in extended precision.
#include <random>

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

template <typename Draw>
double WorstError(double (*function)(double), long double (*reference)(long double), Draw draw) {
  double worst = 0;
  for (int i = 0; i < 100000; ++i) {
    const double x = draw();
    worst = std::max(worst, Error(function(x), reference(x)));
  }
  return worst;
}

template <typename Draw>
double WorstError(double (*function)(double, double), long double (*reference)(long double, long double), Draw draw) {
  double worst = 0;
  for (int i = 0; i < 100000; ++i) {
    const double x = draw(), y = draw();
    worst = std::max(worst, Error(function(x, y), reference(x, y)));
  }
  return worst;
}

bool SameValue(double a, double b) {
  return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
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
  CHECK(Exp(-kInfinity) == 0);
  CHECK(Exp(kInfinity) == kInfinity);
  CHECK(Exp(709.79) == kInfinity);
  CHECK(Exp(0) == 1);
  CHECK(Log(0) == -kInfinity);
  CHECK(Log(-0.0) == -kInfinity);
  CHECK(std::isnan(Log(-1)));
  CHECK(Log(kInfinity) == kInfinity);
  CHECK(SameValue(Log(1), 0));
  for (double (*function)(double) : {Atan, Sin}) CHECK(SameValue(function(-0.0), -0.0));
  for (double (*function)(double) : {Exp, Log, Atan, Acos, Sin, Cos}) CHECK(std::isnan(function(nan)));
  for (double (*function)(double) : {Sin, Cos}) CHECK(std::isnan(function(-kInfinity)));
  CHECK(Acos(1) == 0);
  CHECK(std::isnan(Acos(1.0000000000000002)));
  const double values[] = {0.0, -0.0, 1.0, -2.5, kInfinity, -kInfinity, nan, 5e-324, 1e308};
  for (const double x : values)
    for (const double y : values) {
      CAPTURE(x);
      CAPTURE(y);
      CHECK((SameValue(Atan2(y, x), std::atan2(y, x)) || Error(Atan2(y, x), atan2l(y, x)) < 0.85));
      if (x >= 0 || std::isnan(x)) CHECK(SameValue(Pow(std::fabs(x), y), std::pow(std::fabs(x), y)));
    }
  CHECK(std::isnan(Pow(-1, 2)));
}
