// Weights of the differences: what is measured at a place (isotropic, cross, dot, axis; grey levels) times the rule
// that makes a weight of it. Least squares of the weighted differences, weighed anew again and again, are the
// iteratively reweighted least squares of robust statistics (Holland and Welsch 1977).
#pragma once

#include <cstdint>
#include <vector>

#include "image/bit_mask.h"
#include "linear/matrix2.h"
#include "platform/threads/standing_team.h"
#include "restore/blocks/row_runs.h"
#include "restore/terms/orientation_field.h"

namespace norv {

// (w g)^2 is lambda^2 times twice the penalty that gives a rule its name.
enum class Rule {
  huber,       // lambda up to delta, then falling (Huber 1964: quadratic up to delta, linear beyond)
  lorentzian,  // lambda sqrt(ln(1 + g^2 / s^2) / g^2) with s = delta sqrt 2 (Black and Anandan 1996)
  shaped,      // Huber's rule with the power p in place of 1 in its penalty beyond delta
};

struct Weighting {
  Rule rule;
  float lambda;     // 0 or more, no unit
  float delta;      // grey levels above 0
  float shape = 1;  // p of the shaped rule; 0 or less: the logarithmic limit
};

// Weights of n measured values, in place. squared: the values are g^2, else g with any sign.
void ApplyRule(float* values, int64_t n, const Weighting& weighting, bool squared);

// Planes of weights are dimensioned for all of x, and filled in those of the rows asked for that they have.
// Of the (w-1) x (h-1) cells of x.
void WeighIsotropic(matrix& w, const matrix& x, const Weighting& weighting, StandingTeam& team, Range rows = kAllRows);
// Of the w x h mirrored cells, across and along the directions.
void WeighCross(matrix& w, const matrix& x, const OrientationField& field, const Weighting& weighting,
                StandingTeam& team, Range rows = kAllRows);
void WeighDot(matrix& w, const matrix& x, const OrientationField& field, const Weighting& weighting, StandingTeam& team,
              Range rows = kAllRows);
// Of neighbours in rows ((w-1) x h) and in columns (w x (h-1)).
void WeighAxes(matrix& across, matrix& down, const matrix& x, const Weighting& weighting, StandingTeam& team,
               Range rows = kAllRows);

// The set pixels of a mask in raster order.
struct PixelList {
  std::vector<int32_t> column;
  std::vector<int64_t> begin;  // of every row in column, one more than rows

  // rows: of the plane that the pixels are of; those that the mask lacks hold none.
  PixelList(const BitMask& mask, int32_t rows, StandingTeam& team = StandingTeam::Alone());
};

// Cross weights at those pixels only, stored compactly.
void WeighListed(std::vector<float>& w, const matrix& x, const OrientationField& field, const PixelList& pixels,
                 const Weighting& weighting, StandingTeam& team, Range rows = kAllRows);

// d1 and d2 of one mirrored cell, for code that looks at single pixels instead of rows.
struct CellDifferences {
  float d1, d2;
};
CellDifferences CellAt(const PlaneRows& x, int32_t r, int32_t c);

}  // namespace norv
