// The one conjugate-gradient solver of the restoration.
#pragma once

#include <cstdint>
#include <span>

#include "linear/matrix2.h"
#include "platform/progress.h"
#include "restore/filter_pair.h"
#include "restore/terms/differences.h"

namespace norv {

// Planes that a solver works in, two of the large size and two of the small; made once, reused by every call.
struct SolverScratch {
  matrix direction, gradient;         // p and g
  matrix residual, reducedDirection;  // r0 and q0

  explicit SolverScratch(const FilterPair& pair);
};

// Takes `steps` steps of conjugate gradients (Hestenes and Stiefel 1952, least-squares form) from x towards the minimum
// of |R x - y|^2 + the sum of |D x|^2 over the terms, whose weights stand. Residuals are carried along, never formed
// anew from x; two sweeps over the rows a step. Sums of squares in double precision in an order that depends on nothing
// but the sizes, then rounded. Allocates nothing. False when x has become NaN, which no further step would change.
// progress: null, or advanced by `steps`, as they are taken.
bool StepTowardsMinimum(matrix& x, const matrix& y, FilterPair& pair, std::span<DifferenceTerm* const> terms,
                        int32_t steps, SolverScratch& scratch, Progress* progress = nullptr);

}  // namespace norv
