// How the power of a plane is spread over frequencies, in a few cells that are compared with what is expected.
#pragma once

#include <array>
#include <functional>
#include <vector>

#include "linear/matrix2.h"

namespace norv {

// Sides of the pieces that the spectrum is the mean over, and of the least plane that has one, in pixels.
inline constexpr int32_t kSpectrumSide = 64;

// Frequencies that count as one: a ring of a width of about 0.04, in one of three sectors (along rows, diagonal, along
// columns). In cycles a pixel, so that 0.5 along an axis is the highest there is.
struct SpectrumCell {
  double radius = 0, angle = 0;  // of its middle; the angle from 0, along rows, to pi / 2
  std::vector<std::array<double, 2>> frequencies;
};

// All of them, from 0.04 to 0.72; the same every time.
const std::vector<SpectrumCell>& SpectrumCells();

// Something of every frequency (x, y), both 0 to 0.5, as its mean over each cell.
std::vector<double> CellMeans(const std::function<double(double x, double y)>& value);

// The plane's power in each cell: the mean over overlapping pieces under a Hann window (Welch 1967), so that noise of
// variance v has the power v everywhere. Of large planes some pieces are left out. Throws a Failure for a plane with
// a side below kSpectrumSide, and for one that has the same value everywhere or others than numbers.
std::vector<double> PowerInCells(const matrix& plane);

}  // namespace norv
