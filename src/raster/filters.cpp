#include "raster/filters.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <numbers>
#include <vector>

#include "simd/math/math.h"

namespace norv {
namespace {

// The family of bicubic filters with the slope p at 1 (Keys 1981).
double Cubic(double x, double p) {
  const double t = std::abs(x);
  if (t < 1) return (p + 2) * t * t * t - (p + 3) * t * t + 1;
  if (t < 2) return p * (t * t * t - 5 * t * t + 8 * t - 4);
  return 0;
}

struct FilterRow {
  Filter filter;
  double (*value)(double x, double parameter);   // x in small pixels
  int64_t (*taps)(int64_t f, double parameter);  // that it covers at the factor f, of f's parity
};

// By ascending filter.
constexpr FilterRow kFilters[] = {
    {Filter::box, [](double, double) { return 1.0; }, [](int64_t f, double) { return f; }},
    {Filter::tent, [](double x, double) { return std::max(1 - std::abs(x), 0.0); },
     [](int64_t f, double) { return 2 * f - f % 2; }},
    {Filter::lanczos, LanczosKernel,
     [](int64_t f, double order) { return 2 * f * static_cast<int64_t>(order) - f % 2; }},
    {Filter::cubic, Cubic, [](int64_t f, double) { return 4 * f - f % 2; }},
    {Filter::gaussian, [](double x, double sigma) { return Exp(-0.5 * x * x / (sigma * sigma)); },
     [](int64_t f, double sigma) {
       return 2 * static_cast<int64_t>(3.0 * static_cast<double>(f) * sigma + 0.5) + f % 2;
     }},
};
static_assert([] {
  for (size_t i = 0; i < std::size(kFilters); ++i)
    if (kFilters[i].filter != static_cast<Filter>(i)) return false;
  return std::size(kFilters) == static_cast<size_t>(Filter::gaussian) + 1;
}());

// ------------------------------------------------------------------------------------------------- their codes

constexpr double kCubicParameters[] = {-0.5, -1.0, 0.0, -1.5, -2.0};  // codes -1 to -5
constexpr double kNarrowSigmas[] = {0.25, 0.35};                      // codes -21 and -22, on purpose not the rule's
constexpr double kWideSigmas[] = {1.1, 1.2, 1.3, 1.4, 1.5};           // codes -31 to -35

struct CodeRow {
  int32_t first, last;
  bool shrinkOrder, kernelCode;  // the families that have these codes
  Filter filter;
  double (*parameter)(int32_t code);
};

double Nothing(int32_t) { return 0; }
double Itself(int32_t code) { return code; }
// Widths are of single precision, by the contract with the graphical program.
double Single(double sigma) { return static_cast<double>(static_cast<float>(sigma)); }

constexpr CodeRow kCodes[] = {
    {0, 0, true, true, Filter::box, Nothing},
    {1, 1, true, true, Filter::tent, Nothing},
    {2, 64, true, false, Filter::lanczos, Itself},
    {2, 5, false, true, Filter::lanczos, Itself},
    {15, 15, false, true, Filter::lanczos, Itself},
    {-5, -1, true, true, Filter::cubic, [](int32_t code) { return kCubicParameters[-1 - code]; }},
    {-20, -11, true, true, Filter::gaussian, [](int32_t code) { return Single((-10 - code) * 0.1); }},
    {-22, -21, true, true, Filter::gaussian, [](int32_t code) { return Single(kNarrowSigmas[-21 - code]); }},
    {-35, -31, false, true, Filter::gaussian, [](int32_t code) { return Single(kWideSigmas[-31 - code]); }},
};

std::optional<FilterChoice> FilterOf(int32_t code, bool CodeRow::*family) {
  for (const CodeRow& row : kCodes)
    if (row.*family && code >= row.first && code <= row.last) return FilterChoice{row.filter, row.parameter(code)};
  return std::nullopt;
}

}  // namespace

std::optional<FilterChoice> FilterOfShrinkOrder(int32_t order) { return FilterOf(order, &CodeRow::shrinkOrder); }

std::optional<FilterChoice> FilterOfKernelCode(int32_t code) { return FilterOf(code, &CodeRow::kernelCode); }

void BuildTaps(matrix& taps, int32_t f, FilterChoice choice) {
  const FilterRow& row = kFilters[static_cast<size_t>(choice.filter)];
  const int64_t length = row.taps(f, choice.parameter);
  const double centre = static_cast<double>(length - 1) * 0.5;
  taps.dim(static_cast<int32_t>(std::min<int64_t>(length, std::numeric_limits<int32_t>::max())), 1);
  std::vector<double> values(static_cast<size_t>(length));
  double sum = 0;
  for (int64_t i = 0; i < length; ++i)
    sum += values[i] = row.value((static_cast<double>(i) - centre) / f, choice.parameter);
  for (int64_t i = 0; i < length; ++i) taps.x[i] = static_cast<float>(values[i] / sum);
}

void ShrinkKernel(matrix& taps, int32_t f, int32_t shrinkOrder) {
  if (const auto choice = FilterOfShrinkOrder(shrinkOrder))
    BuildTaps(taps, f, *choice);
  else
    taps.freemem();
}

double LanczosKernel(double x, double a) {
  if (std::abs(x) >= a) return 0;
  const auto sinc = [](double t) { return t == 0 ? 1.0 : Sin(std::numbers::pi * t) / (std::numbers::pi * t); };
  return sinc(x) * sinc(x / a);
}

}  // namespace norv
