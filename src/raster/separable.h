// Separable filtering of planes: reduction by taps and the table-driven resampler.
#pragma once

#include <cstdint>
#include <vector>

#include "raster/edges.h"

namespace norv {

// Small plane from large plane: every small pixel is the weighted mean of the large pixels under its taps.
//   high  w*f x h*f;  low  w x h, dimensioned by the caller;  taps  L of them, offset (L - f) / 2
// Along rows first, then along columns, each sum in tap order, single precision. Outside pixels are mirrored without
// repeating the edge, as often as needed on short planes.
void ShrinkMatrix(matrix& low, const matrix& high, const matrix& taps);

// Its two passes by themselves, for planes that pass by, the same bits: every row along its length, of which as many
// pixels count as f makes of the result's width; and rows first, first + 1, ... of the small plane, for which the
// window has those that ShrinkSource() says. Results are dimensioned by the caller.
void ShrinkAlongRows(matrix& narrow, const matrix& high, int32_t f, const matrix& taps);
void ShrinkAlongColumns(matrix& low, const PlaneWindow& narrow, int32_t f, const matrix& taps, int32_t first);

// Positions of an axis, `count` from `first` on.
struct AxisPart {
  int32_t first, count;
};
// Those of an axis of `length` pixels that hold all that these output positions are made of. Ascends with them.
AxisPart ShrinkSource(int32_t f, const matrix& taps, int32_t length, AxisPart output);

// Which source pixels an output position is made of.
struct ResampleTable {
  int32_t taps = 0;
  std::vector<int32_t> start;  // one an output position: index of the first tap's source pixel, may be outside
  std::vector<float> weights;  // taps an output position

  int32_t Length() const { return static_cast<int32_t>(start.size()); }
};

// Lanczos weights of order a for `length` output positions p = k*step + offset: taps weights from trunc(p) - (taps - 1)
// / 2 on, each row with sum 1. widen stretches the filter for reductions (step > 1). k counts from `first`.
void LanczosWeights(ResampleTable& table, int32_t length, int32_t taps, double a, double step, double offset,
                    bool widen, int32_t first = 0);

// The tables that enlarge an axis of the given length by f: Lanczos-3 with 9 taps.
ResampleTable EnlargementTable(int32_t length, int32_t f);
// The part of such a table for `count` output positions from `first` on.
ResampleTable EnlargementTablePart(int32_t f, int32_t first, int32_t count);

// Along rows with the horizontal table, then along columns with the vertical one. Zero weights at both ends of a row
// are left out; where a tap falls outside the axis, the taps inside count alone and the sum is divided by their weight
// if that is positive. The vertical table may have some of the output rows only; then the plane's window needs to hold
// no more than the rows that those are made of. Starts ascend.
void ResampleSeparable(const PlaneWindow& plane, matrix& result, const ResampleTable& horizontal,
                       const ResampleTable& vertical);

// Its two passes by themselves, for planes that pass by: every row along its length, and the output rows first, first +
// 1, ... of a plane whose window has SourceOf() them. The same bits.
void ResampleAlongRows(const matrix& plane, matrix& result, const ResampleTable& horizontal);
void ResampleAlongColumns(const PlaneWindow& plane, matrix& result, const ResampleTable& vertical, int32_t first,
                          int32_t count);

// As ShrinkSource() says it.
AxisPart SourceOf(const ResampleTable& table, int32_t length, AxisPart output);

}  // namespace norv
