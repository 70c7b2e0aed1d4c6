#include "kit/search/blur_estimate.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "kit/pictures/luminance.h"
#include "kit/scale/restore_presets.h"
#include "kit/search/power_law.h"
#include "kit/search/power_spectrum.h"
#include "platform/console.h"
#include "simd/math/math.h"

namespace norv {
namespace {

// Squares of sigmas that are tried, below 0 for pictures that were sharpened.
constexpr double kFirst = -0.2, kLast = 4.5, kStep = 0.02;
// How photographs without any blur come out, and from where on one was laid over them.
constexpr double kOwnSoftness = 0.06, kLeast = 0.31;
constexpr PictureVariety kVariety{.exponent = 0.25, .blur = 0};

// The least misfit over the strengths of noise that a picture can have, more being less likely.
double MisfitWithNoise(const std::vector<double>& measured, const std::vector<double>& expected, double rounding) {
  constexpr double kUnlikely = 0.25;
  double least = std::numeric_limits<double>::infinity();
  for (const int doublings : {0, 2, 4, 6}) {
    const double noise = rounding * (1 << doublings);
    least = std::min(least, Misfit(measured, expected, noise, kVariety) + kUnlikely * doublings * doublings);
  }
  return least;
}

std::vector<double> ExpectedOf(double square) {
  return CellMeans([&](double x, double y) {
    const double radius = x * x + y * y;
    return Exp(-kPowerExponent / 2 * Log(radius) - 4 * std::numbers::pi * std::numbers::pi * square * radius);
  });
}

}  // namespace

BlurEstimate EstimateBlur(const SeenLuminance& picture) {
  const std::vector<double> measured = PowerInCells(picture.plane);
  const double rounding = RoundingNoise(picture.bits, picture.grey);
  std::vector<double> squares, misfits;
  for (double square = kFirst; square <= kLast; square += kStep) {
    squares.push_back(square);
    misfits.push_back(MisfitWithNoise(measured, ExpectedOf(square), rounding));
  }
  const std::vector<double> likelihoods = Likelihoods(misfits);
  double all = 0, mean = 0, spread = 0;
  for (size_t i = 0; i < squares.size(); ++i) all += likelihoods[i];
  for (size_t i = 0; i < squares.size(); ++i) mean += likelihoods[i] * squares[i] / all;
  for (size_t i = 0; i < squares.size(); ++i) spread += likelihoods[i] * std::pow(squares[i] - mean, 2) / all;
  if (mean < kLeast) return {};
  const double sigma = std::sqrt(mean - kOwnSoftness);
  return {sigma, std::sqrt(spread) / (2 * sigma)};
}

double BlurToTakeBack(const SeenLuminance& picture) {
  const BlurEstimate blur = EstimateBlur(picture);
  if (!blur.Found())
    Tell("no blur found");
  else
    Tell("blur: Gaussian of %.2f pixels%s", blur.sigma, blur.sigma > kMostBlur ? ", of which 1.5 are taken back" : "");
  return std::min(blur.sigma, kMostBlur);
}

}  // namespace norv
