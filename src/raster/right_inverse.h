// What a reduction lost of small planes, given back to large ones.
#pragma once

#include "raster/separable.h"

namespace norv {

// The table P = R^T (R R^T + d)^-1 of the reduction R of an axis of `length` pixels, whose starts lie inside it and
// ascend: to the axis y, P (x - R y) adds the least (in squares) after which it is reduced to x. d is `damping` times
// the mean of the diagonal of R R^T: what hardly passes the reduction is not forced. Of rows and columns together that
// makes the projection onto all planes that are reduced to x (Ben-Israel and Greville 2003, ch. 2), but for weights of
// more than `reach` small pixels away from those that touch a position, which are left out: they fall off
// exponentially.
ResampleTable RightInverse(const ResampleTable& reduction, int32_t length, double damping, int32_t reach);

}  // namespace norv
