// The one conjugate-gradient solver of the restoration.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "linear/matrix2.h"
#include "platform/progress.h"
#include "platform/threads/standing_team.h"
#include "restore/blocks/peers.h"
#include "restore/blocks/plane_rows.h"
#include "restore/blocks/row_runs.h"
#include "restore/filter_pair.h"
#include "restore/terms/differences.h"

namespace norv {

// A sum of squares in the eight partial sums that the kernels add to; in the end these are added in order. What a block
// brings to a sum of the whole plane is one of these.
struct alignas(64) SquareSum {
  double parts[8] = {};

  void Add(const SquareSum& other) {
    for (int i = 0; i < 8; ++i) parts[i] += other.parts[i];
  }
  float Total() const {
    double total = 0;
    for (const double part : parts) total += part;
    return static_cast<float>(total);
  }
};

// A run of blocks as the solver works on it: the rows that are its own, and its copies of neighbouring rows of the
// direction and the residual. To go on from one sweep to the next it needs of others the rows of the gradient and of
// the reduced direction that belong to those copies, and the blocks' sums: nothing else, from other threads or peers.
struct SolverRun {
  int32_t number;
  Range blocks, rows, smallRows;
  RowsWithHalo direction, residual;
  FilterLines lines;
};

// Planes that a solver works in, two of the large size and two of the small; made once, reused by every call.
struct SolverScratch {
  matrix direction, gradient;         // p and g
  matrix residual, reducedDirection;  // r0 and q0
  RowRuns cut;
  std::vector<SolverRun> runs;
  std::vector<SquareSum> sums;  // of every block
  Peers& peers;
  RowsOfPeers largeRows, smallRows;  // of the direction and its gradient, and of the residual and what reduces it

  // among: those that the cut's parts belong to; they outlive this.
  SolverScratch(const FilterPair& pair, const RowRuns& rowRuns, Peers& among = Peers::None());
};

// Takes `steps` steps of conjugate gradients (Hestenes and Stiefel 1952, least-squares form) from x towards the minimum
// of |R x - y|^2 + the sum of |D x|^2 over the terms, whose weights stand. Residuals are carried along, never formed
// anew from x; two sweeps over the rows a step, each shared out by the scratch's runs, for which the terms were made
// too. Among peers each works on its own rows, and has of x and y those that it looks at (scratch.largeRows and
// smallRows). Sums of squares in double precision, block by block, then rounded: their order depends on nothing but the
// sizes, and with it no bit of x on the team. Allocates nothing. False when x has become NaN, which no further step
// would change. progress: null, or advanced by `steps`, as they are taken.
bool StepTowardsMinimum(matrix& x, const matrix& y, const FilterPair& pair, std::span<DifferenceTerm* const> terms,
                        int32_t steps, SolverScratch& scratch, StandingTeam& team, Progress* progress = nullptr);

}  // namespace norv
