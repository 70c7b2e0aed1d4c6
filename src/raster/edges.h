// What is read outside an axis of n elements, as index rules, and rectangles of planes cut by them.
#pragma once

#include <cstdint>

#include "linear/matrix2.h"

namespace norv {

// Mirrored without repeating the edge, as often as needed; an axis of length 1 always reads 0.
constexpr int64_t MirrorIndex(int64_t i, int64_t n) {
  if (n == 1) return 0;
  const int64_t period = 2 * (n - 1);
  i %= period;
  if (i < 0) i += period;
  return i < n ? i : period - i;
}

// The nearest index inside.
constexpr int64_t ClampIndex(int64_t i, int64_t n) { return i < 0 ? 0 : i < n ? i : n - 1; }

enum class EdgeRule { mirror, clamp };

constexpr int64_t EdgeIndex(EdgeRule rule, int64_t i, int64_t n) {
  return rule == EdgeRule::mirror ? MirrorIndex(i, n) : ClampIndex(i, n);
}

// Pixels of a plane, some of which may lie outside it.
struct Rectangle {
  int64_t row, column;  // its top left pixel
  int64_t rows, columns;
};

// Neighbouring rows of a plane of which no more is at hand. A whole plane is such a window too.
struct PlaneWindow {
  const matrix& rows;
  int32_t first;   // the plane's row that is the first of these
  int32_t height;  // rows of the plane

  PlaneWindow(const matrix& plane) : PlaneWindow(plane, 0, plane.n) {}
  PlaneWindow(const matrix& part, int32_t firstRow, int32_t planeHeight)
      : rows(part), first(firstRow), height(planeHeight) {}

  // Row r of the plane, which the window has.
  const float* Row(int64_t r) const { return rows.z[r - first]; }
};

// Copies the rectangle to rows that are `stride` floats apart, by the rule where it lies outside the plane. The plane
// has pixels; its window has the rows that the rule asks for.
void CopyRectangle(const PlaneWindow& plane, EdgeRule rule, const Rectangle& area, float* target, int64_t stride);

}  // namespace norv
