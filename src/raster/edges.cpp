#include "raster/edges.h"

#include <algorithm>

namespace norv {
namespace {

// Pixels column, column + 1, ... of a row of w pixels; those inside are copied as one run.
void CopyRun(const float* row, int64_t w, EdgeRule rule, int64_t column, int64_t columns, float* target) {
  const int64_t inside = std::clamp<int64_t>(-column, 0, columns);
  const int64_t behind = std::clamp<int64_t>(w - column, inside, columns);
  for (int64_t c = 0; c < inside; ++c) target[c] = row[EdgeIndex(rule, column + c, w)];
  std::copy_n(row + column + inside, behind - inside, target + inside);
  for (int64_t c = behind; c < columns; ++c) target[c] = row[EdgeIndex(rule, column + c, w)];
}

}  // namespace

void CopyRectangle(const PlaneWindow& plane, EdgeRule rule, const Rectangle& area, float* target, int64_t stride) {
  for (int64_t r = 0; r < area.rows; ++r)
    CopyRun(plane.Row(EdgeIndex(rule, area.row + r, plane.height)), plane.rows.m, rule, area.column, area.columns,
            target + r * stride);
}

}  // namespace norv
