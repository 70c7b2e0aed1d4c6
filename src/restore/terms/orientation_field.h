// The direction of the strongest change at every pixel: the first eigenvector of the smoothed structure tensor
// (Foerstner and Guelch 1987, Bigun and Granlund 1987) of the differences across 2 x 2 cells.
#pragma once

#include <cstdint>
#include <vector>

#include "linear/matrix2.h"
#include "platform/threads/standing_team.h"
#include "raster/edges.h"
#include "restore/blocks/plane_rows.h"
#include "restore/blocks/row_runs.h"
#include "simd/restore/kernels.h"

namespace norv {

// The vectors (cos, sin) as two planes; (0, 0) where the plane does not change. After they were multiplied by weights
// they are no unit vectors any more.
struct OrientationField {
  matrix u1, u2;

  DirectionRow Row(int32_t r, int64_t c = 0) const { return {u1.z[r] + c, u2.z[r] + c}; }
};

// Field of the plane x with the tensor's planes smoothed by a Gaussian of `scale` pixels (radius ceil(3 scale),
// mirrored edges); 0, less and NaN: no smoothing. Scales beyond 100 times the longer side count as that.
// rows: that are found; of x those count that OrientationSources() says.
void FindOrientation(OrientationField& field, const matrix& x, double scale, StandingTeam& team, Range rows = kAllRows);
// The rows of a plane of that size that some rows of its field are made of.
Range OrientationSources(Range rows, double scale, int32_t width, int32_t height);

// Weighted neighbours on an axis of n elements: element i gathers the elements MirrorIndex(i + offset) with weights of
// sum 1. A reach longer than the mirror's period is folded onto one period.
struct SmoothingTaps {
  std::vector<int64_t> offsets;  // ascending
  std::vector<float> weights;
};
SmoothingTaps GaussianTaps(double scale, int64_t n);

// The cells of row r of a plane, mirrored at the far borders: body(cells, column, count) for runs of neighbours.
template <typename Body>
void ForCells(const PlaneRows& x, int32_t r, const Body& body) {
  const float* upper = x[r];
  const float* lower = x[MirrorIndex(int64_t{r} + 1, x.n)];
  const int64_t last = x.m - 1;
  body(CellRow{upper, lower, 1}, int64_t{0}, last);
  body(CellRow{upper + last, lower + last, MirrorIndex(last + 1, x.m) - last}, last, int64_t{1});
}

}  // namespace norv
