#include "restore/edge_mask.h"

#include <algorithm>

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

// body(begin, end) on parts of the rows of a mask that have no word in common.
template <typename Body>
void ForMaskRows(const BitMask& mask, StandingTeam& team, const Body& body) {
  constexpr int64_t kRowsOfWholeWords = 32;
  const int64_t groups = (mask.height + kRowsOfWholeWords - 1) / kRowsOfWholeWords;
  ForRows(team, mask.width * static_cast<int32_t>(kRowsOfWholeWords), groups, [&](int64_t begin, int64_t end) {
    body(static_cast<int32_t>(begin * kRowsOfWholeWords),
         static_cast<int32_t>(std::min<int64_t>(end * kRowsOfWholeWords, mask.height)));
  });
}

}  // namespace

void MarkEdges(BitMask& mask, const matrix& plane, float threshold, StandingTeam& team, Range rows) {
  if (mask.Empty()) mask.Resize(plane.m, plane.n);
  ForMaskRows(mask, team, [&](int32_t begin, int32_t end) {
    const Range inner = RowsWithin({std::max<int64_t>(begin, rows.begin), std::min<int64_t>(end, rows.end)}, plane.n);
    for (int64_t r = std::max<int64_t>(inner.begin, 1); r < std::min<int64_t>(inner.end, plane.n - 1); ++r)
      for (int32_t c = 1; c < plane.m - 1; ++c)
        if (IsEdge(plane.z[r - 1] + c, plane.z[r] + c, plane.z[r + 1] + c, threshold * threshold))
          mask.Set(static_cast<int32_t>(r), c);
  });
}

void GrowMask(BitMask& mask, int32_t passes, StandingTeam& team) {
  bool changed = true;
  // A pass that sets nothing would be followed by equal ones.
  for (int32_t pass = 0; pass < passes && changed; ++pass) {
    const BitMask before = mask;
    ForMaskRows(mask, team, [&](int32_t begin, int32_t end) {
      for (int32_t r = std::max(begin - 1, 1); r < std::min(end + 1, mask.height - 1); ++r)
        for (int32_t c = 1; c < mask.width - 1; ++c) {
          if (!before.Get(r, c)) continue;
          for (int32_t row = std::max(r - 1, begin); row < std::min(r + 2, end); ++row)
            for (int32_t k = -1; k <= 1; ++k) mask.Set(row, c + k);
        }
    });
    changed = mask.words != before.words;
  }
}

BitMask DilateMask(const BitMask& mask, StandingTeam& team) {
  BitMask dilated;
  dilated.Resize(mask.width, mask.height);
  ForMaskRows(mask, team, [&](int32_t begin, int32_t end) {
    for (int32_t r = begin; r < std::min(end, mask.height - 1); ++r)
      for (int32_t c = 0; c < mask.width - 1; ++c)
        if (mask.Get(r, c) || mask.Get(r + 1, c + 1) || mask.Get(r + 1, c) || mask.Get(r, c + 1)) dilated.Set(r, c);
  });
  return dilated;
}

}  // namespace norv
