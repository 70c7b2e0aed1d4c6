// What is read outside an axis of n elements, as index rules, and rectangles of planes cut by them.
#pragma once

#include <cstdint>

#include "numeric/matrix2.h"

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

// Copies the rectangle to rows that are `stride` floats apart, by the rule where it lies outside. The plane has pixels.
void CopyRectangle(const matrix& plane, EdgeRule rule, const Rectangle& area, float* target, int64_t stride);

}  // namespace norv
