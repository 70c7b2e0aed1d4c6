#include "kit/search/power_law.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "kit/search/power_spectrum.h"
#include "simd/math/math.h"

namespace norv {
namespace {

// What is fitted: level, exponent, differences between rows and columns, between axes and diagonals, earlier blur.
constexpr int kUnknowns = 5;
using Vector = std::array<double, kUnknowns>;

// Cells along an axis vary more from picture to picture: buildings, horizons, the frame of the picture.
constexpr double kDeviationOnAxes = 0.3, kDeviationElsewhere = 0.17;
constexpr double kMoreOnAxes = 0.2;  // of the cosine of four times the angle, as photographs have it
constexpr Vector kSpread = {100, 1, 0.4, 0.3, 1};
constexpr double kLeastPower = 1e-9, kLargest = 60;
constexpr int kSteps = 4, kCellsOfLevel = 8;

Vector EffectsOn(const SpectrumCell& cell) {
  return {1, -Log(cell.radius), Cos(2 * cell.angle), Cos(4 * cell.angle),
          -4 * std::numbers::pi * std::numbers::pi * cell.radius * cell.radius};
}

struct CellRow {
  double measured, expected, deviation;  // logarithms; of the measured one
  Vector effects;
};

double Dot(const Vector& a, const Vector& b) {
  double sum = 0;
  for (int i = 0; i < kUnknowns; ++i) sum += a[i] * b[i];
  return sum;
}

// x of a x = b for symmetric positive a, by elimination.
Vector Solve(std::array<Vector, kUnknowns> a, Vector b) {
  for (int i = 0; i < kUnknowns; ++i)
    for (int r = i + 1; r < kUnknowns; ++r) {
      const double factor = a[r][i] / a[i][i];
      for (int c = i; c < kUnknowns; ++c) a[r][c] -= factor * a[i][c];
      b[r] -= factor * b[i];
    }
  for (int i = kUnknowns - 1; i >= 0; --i) {
    for (int c = i + 1; c < kUnknowns; ++c) b[i] -= a[i][c] * b[c];
    b[i] /= a[i][i];
  }
  return b;
}

// Least squares with what is likely beforehand, by Gauss and Newton's steps.
class Fitter {
 public:
  Fitter(std::span<const double> measured, std::span<const double> expected, double noise,
         const PictureVariety& variety)
      : noise_(noise), spread_(kSpread) {
    spread_[1] = variety.exponent;
    spread_[4] = std::max(variety.blur, 1e-6);
    const std::vector<SpectrumCell>& cells = SpectrumCells();
    for (size_t i = 0; i < cells.size(); ++i) {
      const bool onAxis = Cos(4 * cells[i].angle) > 0.7;
      rows_.push_back({Log(std::max(measured[i], kLeastPower)), Log(std::max(expected[i], 1e-300)),
                       onAxis ? kDeviationOnAxes : kDeviationElsewhere, EffectsOn(cells[i])});
    }
    for (int i = 0; i < kCellsOfLevel; ++i) likely_[0] += (rows_[i].measured - rows_[i].expected) / kCellsOfLevel;
    likely_[3] = kMoreOnAxes;
  }

  double Misfit() const {
    Vector unknowns = likely_;
    for (int step = 0; step < kSteps; ++step) Improve(unknowns);
    double misfit = 0;
    for (const CellRow& row : rows_) misfit += std::pow(Residual(row, unknowns, nullptr), 2);
    for (int i = 1; i < kUnknowns; ++i) misfit += std::pow((unknowns[i] - likely_[i]) / spread_[i], 2);
    return misfit;
  }

 private:
  // In deviations; part: how much of the cell's power the picture has, without noise.
  double Residual(const CellRow& row, const Vector& unknowns, double* part) const {
    const double power = Exp(std::clamp(row.expected + Dot(row.effects, unknowns), -kLargest, kLargest));
    if (part) *part = power / (power + noise_);
    return (row.measured - Log(power + noise_)) / row.deviation;
  }

  void Improve(Vector& unknowns) const {
    std::array<Vector, kUnknowns> normal{};
    Vector right{};
    for (const CellRow& row : rows_) {
      double part = 0;
      const double residual = Residual(row, unknowns, &part);
      Vector slope = row.effects;
      for (double& value : slope) value *= part / row.deviation;
      for (int i = 0; i < kUnknowns; ++i) {
        right[i] += slope[i] * residual;
        for (int j = 0; j < kUnknowns; ++j) normal[i][j] += slope[i] * slope[j];
      }
    }
    for (int i = 0; i < kUnknowns; ++i) {
      const double weight = 1 / (spread_[i] * spread_[i]);
      normal[i][i] += weight;
      right[i] -= weight * (unknowns[i] - likely_[i]);
    }
    const Vector change = Solve(normal, right);
    for (int i = 0; i < kUnknowns; ++i) unknowns[i] += change[i];
  }

  double noise_;
  Vector spread_, likely_{};
  std::vector<CellRow> rows_;
};

}  // namespace

double Misfit(std::span<const double> measured, std::span<const double> expected, double noise,
              const PictureVariety& variety) {
  return Fitter(measured, expected, noise, variety).Misfit();
}

std::vector<double> Likelihoods(std::span<const double> misfits) {
  const double best = *std::ranges::min_element(misfits);
  std::vector<double> likelihoods;
  for (const double misfit : misfits) likelihoods.push_back(Exp((best - misfit) / (2 * kMisfitTemper)));
  return likelihoods;
}

double RoundingNoise(int bits, bool grey) {
  if (bits > 16) return kLeastPower;
  const double step = bits > 8 ? 1.0 / 257 : 1;
  constexpr double kOfColours = 0.299 * 0.299 + 0.587 * 0.587 + 0.114 * 0.114;
  return step * step / 12 * (grey ? 1 : kOfColours);
}

}  // namespace norv
