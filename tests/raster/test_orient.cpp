// The eight orientations of planes and blocks.
#include <doctest/doctest.h>

#include "raster/orient.h"
#include "support/random_plane.h"

using namespace norv;
using namespace norv::test;

TEST_CASE("every orientation puts every pixel where its formula says") {
  const matrix S = RandomPlane(3, 5, 1);
  const int32_t H = S.n, W = S.m;
  for (int32_t k = 0; k < kOrientations; ++k) {
    matrix D;
    OrientMatrix(D, S, k);
    const bool turned = k == 3 || k >= 5;
    REQUIRE(D.n == (turned ? W : H));
    REQUIRE(D.m == (turned ? H : W));
    for (int32_t a = 0; a < D.n; ++a)
      for (int32_t b = 0; b < D.m; ++b) {
        const int32_t left = W - 1 - b, below = H - 1 - a;
        const int32_t rows[] = {a, a, below, H - 1 - b, below, b, H - 1 - b, b};
        const int32_t columns[] = {b, left, b, a, left, W - 1 - a, W - 1 - a, a};
        CHECK(D.z[a][b] == S.z[rows[k]][columns[k]]);
      }
    matrix back;
    RestoreOrientation(back, D, k);
    CHECK(SameBits(back, S));
  }
}

TEST_CASE("an unknown orientation clears the target and keeps its size") {
  const matrix S = RandomPlane(3, 5, 1);
  matrix zeros(2, 2);
  zeros.fill(0);
  for (const int32_t k : {-1, 8}) {
    matrix oriented = RandomPlane(2, 2, 2), restored = oriented;
    OrientMatrix(oriented, S, k);
    RestoreOrientation(restored, S, k);
    CHECK(SameBits(oriented, zeros));
    CHECK(SameBits(restored, zeros));
  }
}

TEST_CASE("permutations of blocks: a quarter turn four times over is none") {
  const std::vector<int32_t> quarter = OrientationPermutation(5, 3), back = OrientationPermutation(5, 5);
  CHECK(quarter[0] == 20);  // clockwise: the lower left pixel comes to the upper left
  for (int32_t i = 0; i < 25; ++i) {
    CHECK(quarter[back[i]] == i);
    CHECK(quarter[quarter[quarter[quarter[i]]]] == i);
  }
}
