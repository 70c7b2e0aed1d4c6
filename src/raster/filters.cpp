#include "raster/filters.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "simd/math.h"

namespace norv {
namespace {

constexpr double kPi = 3.141592653589793;

struct CodeRow {
  int32_t shrinkOrder;
  int32_t kernelCode;
  FilterChoice choice;
};

// The cubic codes stand for the same filter in both families; so do the Gaussian ones from -11 to -22, whose last two
// do not follow the rule of the others on purpose.
constexpr double kCubicParameters[] = {-0.5, -1.0, 0.0, -1.5, -2.0};  // codes -1 to -5
constexpr double kWideSigmas[] = {1.1, 1.2, 1.3, 1.4, 1.5};           // kernel codes -31 to -35
constexpr int32_t kMaxLanczosOrder = 64;

FilterChoice Gaussian(double sigma) { return {Filter::gaussian, static_cast<double>(static_cast<float>(sigma))}; }

// The codes that both families share.
std::optional<FilterChoice> SharedFilter(int32_t code) {
  if (code == 0) return FilterChoice{Filter::box, 0};
  if (code == 1) return FilterChoice{Filter::tent, 0};
  if (code <= -1 && code >= -5) return FilterChoice{Filter::cubic, kCubicParameters[-1 - code]};
  if (code <= -11 && code >= -20) return Gaussian((-10 - code) * 0.1);
  if (code == -21) return Gaussian(0.25);
  if (code == -22) return Gaussian(0.35);
  return std::nullopt;
}

double Cubic(double x, double p) {
  const double t = std::abs(x);
  if (t < 1) return (p + 2) * t * t * t - (p + 3) * t * t + 1;
  if (t < 2) return p * (t * t * t - 5 * t * t + 8 * t - 4);
  return 0;
}

double Value(FilterChoice choice, double x) {
  const double t = std::abs(x);
  switch (choice.filter) {
    case Filter::box:
      return 1;
    case Filter::tent:
      return t < 1 ? 1 - t : 0;
    case Filter::lanczos:
      return LanczosKernel(x, choice.parameter);
    case Filter::cubic:
      return Cubic(x, choice.parameter);
    case Filter::gaussian:
      return Exp(-0.5 * x * x / (choice.parameter * choice.parameter));
  }
  return 0;
}

// Taps that the filter covers at the factor f, of f's parity.
int64_t TapCount(FilterChoice choice, int32_t f) {
  const int64_t odd = f % 2;
  switch (choice.filter) {
    case Filter::box:
      return f;
    case Filter::tent:
      return 2 * int64_t{f} - odd;
    case Filter::lanczos:
      return 2 * f * static_cast<int64_t>(choice.parameter) - odd;
    case Filter::cubic:
      return 4 * int64_t{f} - odd;
    case Filter::gaussian:
      return 2 * static_cast<int64_t>(3.0 * f * choice.parameter + 0.5) + odd;
  }
  return 0;
}

}  // namespace

std::optional<FilterChoice> FilterOfShrinkOrder(int32_t order) {
  if (order >= 2 && order <= kMaxLanczosOrder) return FilterChoice{Filter::lanczos, static_cast<double>(order)};
  return SharedFilter(order);
}

std::optional<FilterChoice> FilterOfKernelCode(int32_t code) {
  if ((code >= 2 && code <= 5) || code == 15) return FilterChoice{Filter::lanczos, static_cast<double>(code)};
  if (code <= -31 && code >= -35) return Gaussian(kWideSigmas[-31 - code]);
  return SharedFilter(code);
}

void BuildTaps(matrix& taps, int32_t f, FilterChoice choice) {
  const int64_t length = TapCount(choice, f);
  const double centre = static_cast<double>(length - 1) * 0.5;
  taps.dim(static_cast<int32_t>(std::min<int64_t>(length, std::numeric_limits<int32_t>::max())), 1);
  std::vector<double> values(static_cast<size_t>(length));
  double sum = 0;
  for (int64_t i = 0; i < length; ++i) sum += values[i] = Value(choice, (static_cast<double>(i) - centre) / f);
  for (int64_t i = 0; i < length; ++i) taps.x[i] = static_cast<float>(values[i] / sum);
}

void ShrinkKernel(matrix& kernel, int32_t f, int32_t shrinkOrder) {
  if (const auto choice = FilterOfShrinkOrder(shrinkOrder))
    BuildTaps(kernel, f, *choice);
  else
    kernel.freemem();
}

double LanczosKernel(double x, double a) {
  if (std::abs(x) >= a) return 0;
  const auto sinc = [](double t) { return t == 0 ? 1.0 : Sin(kPi * t) / (kPi * t); };
  return sinc(x) * sinc(x / a);
}

}  // namespace norv
