#include "kit/search/filter_estimate.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

#include "kit/pictures/luminance.h"
#include "kit/search/power_law.h"
#include "kit/search/power_spectrum.h"
#include "raster/filters.h"
#include "simd/math/math.h"

namespace norv {
namespace {

const std::vector<FilterFamily>& Families() {
  static const std::vector<FilterFamily> kFamilies = {
      {"box, a Gaussian of up to 0.4 pixels, cubic of 0", {0, -3, -12, -13, -14, -21, -22}},
      {"tent or a Gaussian of about 0.5 pixels", {1, -15}},
      {"mild cubic or Lanczos-2", {-1, 2}},
      {"sharp: Lanczos-3 and longer, cubic of -1", {3, -2, 4, 6, 16}},
      {"over-sharp: cubic of -1.5 or -2", {-4, -5}},
      {"Gaussian of about 0.6 pixels", {-16}},
      {"Gaussian of about 0.7 pixels", {-17}},
      {"Gaussian of about 0.8 pixels", {-18}},
      {"Gaussian of about 0.9 pixels", {-19}},
      {"Gaussian of about 1.0 pixels", {-20}},
  };
  return kFamilies;
}

constexpr int32_t kFactors[] = {2, 4};
// What large pictures have of blur is so much less in small ones.
constexpr double kOwnSoftness = 0.05;
constexpr PictureVariety kVariety{.exponent = 0.4, .blur = 0.02};

// The filter's response at a frequency in cycles a small pixel.
double Response(const matrix& taps, int32_t factor, double frequency) {
  const double centre = (taps.mn - 1) * 0.5;
  double sum = 0;
  for (int32_t i = 0; i < taps.mn; ++i)
    sum += taps.x[i] * Cos(2 * std::numbers::pi * frequency * (i - centre) / factor);
  return sum;
}

// The power at a frequency of the small picture: its own and what is folded onto it from beyond its highest.
class FoldedPower {
 public:
  FoldedPower(int32_t order, int32_t factor) : factor_(factor) { ShrinkKernel(taps_, factor, order); }

  double At(double x, double y) const {
    double sum = 0;
    for (int32_t down = -factor_ / 2; down <= (factor_ - 1) / 2; ++down)
      for (int32_t along = -factor_ / 2; along <= (factor_ - 1) / 2; ++along) sum += Own(x + along, y + down);
    return sum;
  }

 private:
  double Own(double x, double y) const {
    const double radius = x * x + y * y;
    const double amplitude = Response(taps_, factor_, x) * Response(taps_, factor_, y);
    const double softness = kOwnSoftness / (factor_ * factor_);
    return amplitude * amplitude *
           Exp(-kPowerExponent / 2 * Log(radius) - 4 * std::numbers::pi * std::numbers::pi * softness * radius);
  }

  int32_t factor_;
  matrix taps_;
};

}  // namespace

std::vector<FilterFamily> EstimateFilter(const SeenLuminance& small) {
  const std::vector<double> measured = PowerInCells(small.plane);
  const double noise = RoundingNoise(small.bits, small.grey);
  std::vector<FilterFamily> families = Families();
  std::vector<double> misfits;
  for (const FilterFamily& family : families)
    for (const int32_t order : family.orders)
      for (const int32_t factor : kFactors) {
        const FoldedPower power(order, factor);
        const auto expected = CellMeans([&](double x, double y) { return power.At(x, y); });
        misfits.push_back(Misfit(measured, expected, noise, kVariety));
      }
  const std::vector<double> likelihoods = Likelihoods(misfits);
  double all = 0;
  size_t next = 0;
  for (FilterFamily& family : families) {
    const size_t count = family.orders.size() * std::size(kFactors);
    for (size_t i = 0; i < count; ++i) family.probability += likelihoods[next++] / static_cast<double>(count);
    all += family.probability;
  }
  for (FilterFamily& family : families) family.probability /= all;
  std::ranges::stable_sort(families, std::greater(), &FilterFamily::probability);
  return families;
}

}  // namespace norv
