#include "kit/measure/difference_map.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "kit/pictures/picture.h"

namespace norv {
namespace {

struct Stop {
  float difference;
  std::array<float, 3> colour;
};
// Each lighter than the one before, so that the map reads in grey too.
constexpr Stop kStops[] = {{0, {0, 0, 0}},      {1, {30, 20, 110}},   {4, {130, 30, 130}},
                           {16, {230, 90, 40}}, {64, {255, 220, 70}}, {255, {255, 255, 255}}};
constexpr std::array<float, 3> kNoNumber = {0, 200, 0};

std::array<float, 3> ColourOf(float difference) {
  if (std::isnan(difference)) return kNoNumber;
  const Stop* above = std::begin(kStops) + 1;
  while (above + 1 != std::end(kStops) && above->difference < difference) ++above;
  const Stop* below = above - 1;
  const float part = std::min(1.0f, (difference - below->difference) / (above->difference - below->difference));
  std::array<float, 3> colour;
  for (size_t k = 0; k < 3; ++k) colour[k] = below->colour[k] + part * (above->colour[k] - below->colour[k]);
  return colour;
}

// Keeps what is no number.
void TakeLarger(matrix& largest, const matrix& a, const matrix& b) {
  for (int32_t i = 0; i < largest.mn; ++i) {
    const float difference = std::abs(a.x[i] - b.x[i]);
    if (!(difference <= largest.x[i])) largest.x[i] = std::isnan(largest.x[i]) ? largest.x[i] : difference;
  }
}

}  // namespace

matrix LargestDifferences(const Picture& a, const Picture& b) {
  matrix largest(a.Width(), a.Height());
  largest.fill(0);
  const int32_t colours = a.IsGrey() && b.IsGrey() ? 1 : 3;
  for (int32_t k = 0; k < colours; ++k) TakeLarger(largest, a.Colour(k), b.Colour(k));
  if (a.HasAlpha() && b.HasAlpha()) TakeLarger(largest, a.Alpha(), b.Alpha());
  return largest;
}

DifferenceFigures FiguresOf(const matrix& differences) {
  DifferenceFigures figures;
  for (int32_t i = 0; i < differences.mn; ++i) {
    const float difference = differences.x[i];
    figures.differing += difference != 0;
    if (!(difference > figures.largest)) continue;
    figures.largest = difference;
    figures.column = i % differences.m;
    figures.row = i / differences.m;
  }
  return figures;
}

Picture DifferenceMap(const matrix& differences) {
  Picture map(differences.m, differences.n, 3);
  for (int32_t i = 0; i < differences.mn; ++i) {
    const std::array<float, 3> colour = ColourOf(differences.x[i]);
    for (size_t k = 0; k < 3; ++k) map.plane[k].x[i] = colour[k];
  }
  return map;
}

}  // namespace norv
