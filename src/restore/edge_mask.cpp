#include "restore/edge_mask.h"

namespace norv {
namespace {

// Largest squared gradient of the 3 x 3 pixels around column x, along the axes or along the diagonals.
bool IsEdge(const float* a, const float* b, const float* c, float bound) {
  const float h = a[1] + b[1] + c[1] - a[-1] - b[-1] - c[-1];
  const float v = c[-1] + c[0] + c[1] - a[-1] - a[0] - a[1];
  const float p = c[0] + b[1] + c[1] - a[0] - b[-1] - a[-1];
  const float q = a[0] + a[1] + b[1] - b[-1] - c[0] - c[-1];
  constexpr float kNinth = 0.11111111f;
  return (h * h + v * v) * kNinth >= bound || (p * p + q * q) * kNinth >= bound;
}

}  // namespace

void MarkEdges(BitMask& mask, const matrix& plane, float threshold) {
  if (mask.Empty()) mask.Resize(plane.m, plane.n);
  for (int32_t r = 1; r < plane.n - 1; ++r)
    for (int32_t c = 1; c < plane.m - 1; ++c)
      if (IsEdge(plane.z[r - 1] + c, plane.z[r] + c, plane.z[r + 1] + c, threshold * threshold)) mask.Set(r, c);
}

void GrowMask(BitMask& mask, int32_t passes) {
  bool changed = true;
  // A pass that sets nothing would be followed by equal ones.
  for (int32_t pass = 0; pass < passes && changed; ++pass) {
    const BitMask before = mask;
    for (int32_t r = 1; r < mask.height - 1; ++r)
      for (int32_t c = 1; c < mask.width - 1; ++c) {
        if (!before.Get(r, c)) continue;
        for (int32_t k = 0; k < 9; ++k) mask.Set(r - 1 + k / 3, c - 1 + k % 3);
      }
    changed = mask.words != before.words;
  }
}

BitMask DilateMask(const BitMask& mask) {
  BitMask dilated;
  dilated.Resize(mask.width, mask.height);
  for (int32_t r = 0; r < mask.height - 1; ++r)
    for (int32_t c = 0; c < mask.width - 1; ++c)
      if (mask.Get(r, c) || mask.Get(r + 1, c + 1) || mask.Get(r + 1, c) || mask.Get(r, c + 1)) dilated.Set(r, c);
  return dilated;
}

}  // namespace norv
