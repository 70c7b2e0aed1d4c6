// The eight orientations of planes and blocks.
#include "raster/orient.h"
#include "support/random_plane.h"
#include "support/test.h"

TEST_CASE("every orientation puts every pixel where its formula says, and can be undone") {
  const matrix S = RandomPlane(3, 5, 1);
  const int32_t H = S.n, W = S.m;
  matrix block(5, 5), D, back;
  std::iota(block.x, block.x + block.mn, 0.0f);
  for (int32_t k = 0; k < kOrientations; ++k) {
    CAPTURE(k);
    OrientMatrix(D, S, k);
    const bool turned = k == 3 || k >= 5;
    REQUIRE((D.n == (turned ? W : H) && D.m == (turned ? H : W)));
    for (int32_t a = 0; a < D.n; ++a)
      for (int32_t b = 0; b < D.m; ++b) {
        const int32_t left = W - 1 - b, below = H - 1 - a;
        const int32_t rows[] = {a, a, below, H - 1 - b, below, b, H - 1 - b, b};
        const int32_t columns[] = {b, left, b, a, left, W - 1 - a, W - 1 - a, a};
        CHECK(D.z[a][b] == S.z[rows[k]][columns[k]]);
      }
    RestoreOrientation(back, D, k);
    CHECK(SameBits(back, S));
    OrientMatrix(D, block, k);
    const std::vector<int32_t> permutation = OrientationPermutation(5, k);
    CHECK(std::equal(permutation.begin(), permutation.end(), D.x, D.x + 25));
  }
  // An unknown one clears the target and keeps its size.
  matrix zeros(2, 2);
  zeros.fill(0);
  for (const int32_t k : {-1, 8})
    for (const auto& orient : {OrientMatrix, RestoreOrientation}) {
      matrix target = RandomPlane(2, 2, 2);
      orient(target, S, k);
      CHECK(SameBits(target, zeros));
    }
}
