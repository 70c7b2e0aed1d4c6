#include "raster/orient.h"

#include <algorithm>
#include <utility>

namespace norv {
namespace {

// D[a][b] = S[r][c], where (r, c) are (a, b), exchanged first if `turned`, then each counted from the far end if asked.
struct Orientation {
  bool turned, upsideDown, backToFront;
};

constexpr Orientation kTable[kOrientations] = {
    {false, false, false}, {false, false, true}, {false, true, false}, {true, true, false},
    {false, true, true},   {true, false, true},  {true, true, true},   {true, false, false},
};

}  // namespace

bool IsTurnedAcross(int32_t k) { return kTable[k].turned; }

Place OrientedPlace(int32_t k, Place to, int32_t H, int32_t W) {
  const Orientation o = kTable[k];
  const int32_t r = o.turned ? to.column : to.row, c = o.turned ? to.row : to.column;
  return {o.upsideDown ? H - 1 - r : r, o.backToFront ? W - 1 - c : c};
}

void OrientMatrix(matrix& D, const matrix& S, int32_t k) {
  if (k < 0 || k >= kOrientations) return D.fill(0);
  const int32_t H = S.n, W = S.m;
  IsTurnedAcross(k) ? D.dim(H, W) : D.dim(W, H);
  for (int32_t a = 0; a < D.n; ++a)
    for (int32_t b = 0; b < D.m; ++b) {
      const Place from = OrientedPlace(k, {a, b}, H, W);
      D.z[a][b] = S.z[from.row][from.column];
    }
}

void RestoreOrientation(matrix& D, const matrix& S, int32_t k) {
  const int32_t inverse = k == 3 ? 5 : k == 5 ? 3 : k;
  OrientMatrix(D, S, inverse);
}

std::vector<int32_t> OrientationPermutation(int32_t side, int32_t k) {
  matrix numbered(side, side), oriented;
  for (int32_t i = 0; i < numbered.mn; ++i) numbered.x[i] = static_cast<float>(i);
  OrientMatrix(oriented, numbered, k);
  std::vector<int32_t> permutation(numbered.mn);
  std::transform(oriented.x, oriented.x + oriented.mn, permutation.begin(),
                 [](float element) { return static_cast<int32_t>(element); });
  return permutation;
}

}  // namespace norv
