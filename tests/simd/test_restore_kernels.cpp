// Row kernels of the restoration: where squares are summed, and every length at every level.
#include "simd/restore/kernels.h"
#include "support/levels.h"
#include "support/random_plane.h"
#include "support/test.h"

TEST_CASE("element i of a row adds its square to sum i mod 8") {
  const matrix x = RandomPlane(50, 1, 1, -9, 9);
  for (int64_t n = 0; n <= 50; ++n) {
    std::array<double, 8> sums{}, expected{};
    ActiveRestoreKernels().addSquares(sums.data(), x.x, n);
    for (int64_t i = 0; i < n; ++i) expected[static_cast<size_t>(i % 8)] += static_cast<double>(x.x[i] * x.x[i]);
    CHECK(sums == expected);
  }
}

TEST_CASE("rules and directions: the same bits for every length at every level, nothing written behind the row") {
  const matrix j = RandomPlane(80, 3, 2, -50, 50), g = RandomPlane(80, 1, 3, -40, 40);
  const auto results = [&](const RestoreKernels& kernels, int64_t n) {
    std::vector<std::vector<float>> rows(6, std::vector<float>(g.x, g.x + 80));
    kernels.huber(rows[0].data(), 0.3f, 4, n);
    kernels.lorentzian(rows[1].data(), 0.3, 4, false, n);
    kernels.shaped(rows[2].data(), 0.3f, 4, 0.8f, n);
    kernels.shaped(rows[3].data(), 0.3f, 4, -1, n);
    kernels.direction(rows[4].data(), rows[5].data(), j.z[0], j.z[1], j.z[2], n);
    return rows;
  };
  for (int64_t n = 0; n < 40; ++n) {
    const auto narrow = results(RestoreKernelsOf(kLevels[0]), n);
    for (const auto& row : narrow)
      CHECK(std::memcmp(row.data() + n, g.x + n, sizeof(float) * static_cast<size_t>(80 - n)) == 0);
    for (const VectorLevel level : AvailableLevels()) CHECK(results(RestoreKernelsOf(level), n) == narrow);
  }
}
