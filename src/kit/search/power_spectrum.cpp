#include "kit/search/power_spectrum.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include "kit/failure.h"
#include "simd/math/math.h"

namespace norv {
namespace {

constexpr int32_t kSide = kSpectrumSide, kHalf = kSide / 2;
constexpr int32_t kMostPieces = 1600;
// Rings of equal width along the axes, and two for the corners.
constexpr int32_t kRings = 12;
constexpr double kFirst = 2.5 / kSide, kNyquist = 0.5, kCorners[] = {0.6, 0.72};
constexpr double kSectors[] = {std::numbers::pi / 8, 3 * std::numbers::pi / 8};

using Complex = std::complex<double>;
using Line = std::array<Complex, kSide>;

// The discrete Fourier transform of a line in place (Cooley and Tukey 1965).
void Transform(Line& line) {
  static const Line kTurns = [] {
    Line turns;
    for (int32_t i = 0; i < kSide; ++i) {
      const double angle = -2 * std::numbers::pi * i / kSide;
      turns[i] = {Cos(angle), Sin(angle)};
    }
    return turns;
  }();
  for (int32_t i = 1, j = 0; i < kSide; ++i) {
    int32_t bit = kSide / 2;
    for (; j & bit; bit /= 2) j ^= bit;
    j ^= bit;
    if (i < j) std::swap(line[i], line[j]);
  }
  for (int32_t length = 2; length <= kSide; length *= 2)
    for (int32_t first = 0; first < kSide; first += length)
      for (int32_t k = 0; k < length / 2; ++k) {
        const Complex odd = line[first + k + length / 2] * kTurns[k * (kSide / length)];
        line[first + k + length / 2] = line[first + k] - odd;
        line[first + k] += odd;
      }
}

std::array<double, kSide> HannWindow() {
  std::array<double, kSide> window;
  double squares = 0;
  for (int32_t i = 0; i < kSide; ++i) {
    window[i] = 0.5 - 0.5 * Cos(2 * std::numbers::pi * i / kSide);
    squares += window[i] * window[i];
  }
  for (double& weight : window) weight /= std::sqrt(squares / kSide);
  return window;
}

using Powers = std::array<std::array<double, kHalf + 1>, kHalf + 1>;  // [y][x], frequencies of both signs as one

// Adds the power of the piece at (x, y), its mean left out.
void AddPiece(const matrix& plane, int32_t x, int32_t y, Powers& powers) {
  static const std::array<double, kSide> kWindow = HannWindow();
  std::array<Line, kSide> lines;
  double sum = 0, weights = 0;
  for (int32_t r = 0; r < kSide; ++r)
    for (int32_t c = 0; c < kSide; ++c) {
      const double weight = kWindow[r] * kWindow[c];
      sum += weight * plane.z[y + r][x + c];
      weights += weight;
    }
  for (int32_t r = 0; r < kSide; ++r) {
    for (int32_t c = 0; c < kSide; ++c) lines[r][c] = kWindow[r] * kWindow[c] * (plane.z[y + r][x + c] - sum / weights);
    Transform(lines[r]);
  }
  for (int32_t c = 0; c < kSide; ++c) {
    Line column;
    for (int32_t r = 0; r < kSide; ++r) column[r] = lines[r][c];
    Transform(column);
    for (int32_t r = 0; r < kSide; ++r)
      powers[std::min(r, kSide - r)][std::min(c, kSide - c)] += std::norm(column[r]) / (kSide * kSide);
  }
}

// Where pieces begin along a side: half of each overlaps the next, or they are thinned out to the step.
int32_t StepFor(const matrix& plane) {
  const auto count = [&](int32_t step) {
    return int64_t{(plane.m - kSide) / step + 1} * ((plane.n - kSide) / step + 1);
  };
  int32_t step = kHalf;
  while (count(step) > kMostPieces) step += kHalf;
  return step;
}

// The sums of both signs: twice along an axis, four times elsewhere.
double TimesCounted(int32_t i) { return i == 0 || i == kHalf ? 1 : 2; }

std::vector<SpectrumCell> MakeCells() {
  std::vector<double> rings;
  for (int32_t i = 0; i <= kRings; ++i) rings.push_back(kFirst + (kNyquist - kFirst) * i / kRings);
  rings.insert(rings.end(), std::begin(kCorners), std::end(kCorners));
  std::vector<SpectrumCell> cells;
  for (size_t ring = 0; ring + 1 < rings.size(); ++ring)
    for (int32_t sector = 0; sector < 3; ++sector) {
      SpectrumCell cell;
      for (int32_t r = 0; r <= kHalf; ++r)
        for (int32_t c = 0; c <= kHalf; ++c) {
          const double x = double(c) / kSide, y = double(r) / kSide, radius = std::hypot(x, y);
          const double angle = std::atan2(y, x);
          if (radius < rings[ring] || radius >= rings[ring + 1]) continue;
          if ((angle >= kSectors[0]) + (angle >= kSectors[1]) != sector) continue;
          cell.frequencies.push_back({x, y});
          cell.radius += radius;
          cell.angle += angle;
        }
      if (cell.frequencies.empty()) continue;
      cell.radius /= static_cast<double>(cell.frequencies.size());
      cell.angle /= static_cast<double>(cell.frequencies.size());
      cells.push_back(std::move(cell));
    }
  return cells;
}

}  // namespace

const std::vector<SpectrumCell>& SpectrumCells() {
  static const std::vector<SpectrumCell> kCells = MakeCells();
  return kCells;
}

std::vector<double> CellMeans(const std::function<double(double x, double y)>& value) {
  std::vector<double> means;
  for (const SpectrumCell& cell : SpectrumCells()) {
    double sum = 0;
    for (const auto& [x, y] : cell.frequencies) sum += value(x, y);
    means.push_back(sum / static_cast<double>(cell.frequencies.size()));
  }
  return means;
}

std::vector<double> PowerInCells(const matrix& plane) {
  if (plane.m < kSide || plane.n < kSide)
    Fail("%d x %d pixels are too few to find a filter or a blur in: it takes %d x %d", plane.m, plane.n, kSide, kSide);
  if (!std::all_of(plane.x, plane.x + plane.mn, [](float value) { return std::isfinite(value); }))
    Fail("the picture holds values that are no numbers");
  const auto [low, high] = std::minmax_element(plane.x, plane.x + plane.mn);
  if (*low == *high) Fail("the picture has one value everywhere, in which no filter and no blur can be found");
  const int32_t step = StepFor(plane);
  Powers powers{};
  int64_t pieces = 0;
  for (int32_t y = 0; y + kSide <= plane.n; y += step)
    for (int32_t x = 0; x + kSide <= plane.m; x += step, ++pieces) AddPiece(plane, x, y, powers);
  return CellMeans([&](double x, double y) {
    const int32_t c = static_cast<int32_t>(x * kSide), r = static_cast<int32_t>(y * kSide);
    return powers[r][c] / (static_cast<double>(pieces) * TimesCounted(r) * TimesCounted(c));
  });
}

}  // namespace norv
