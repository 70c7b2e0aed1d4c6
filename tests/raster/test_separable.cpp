// Reduction and the resampler against plain double loops.
#include "raster/filters.h"
#include "raster/separable.h"
#include "support/plain_restore.h"
#include "support/test.h"

TEST_CASE("reduction is the plain double sum, on planes shorter than the kernel too") {
  for (const int32_t order : {0, 1, 3, 5, -1, -13, -20})
    for (const int32_t f : {1, 2, 3, 4})
      for (const auto& [w, h] : {std::pair{1, 1}, {2, 1}, {3, 4}, {1, 5}, {7, 2}, {12, 9}}) {
        matrix taps, low(w, h);
        ShrinkKernel(taps, f, order);
        const matrix high = RandomPlane(w * f, h * f, 1);
        ShrinkMatrix(low, high, taps);
        const PlainPlane plain = PlainReduce(PlainPlane(high), f, Vector(taps.x, taps.x + taps.mn));
        INFO(order, " ", f);
        for (size_t i = 0; i < plain.v.size(); ++i)
          CHECK(static_cast<double>(low.x[i]) == doctest::Approx(plain.v[i]).epsilon(1e-5));
      }
}

TEST_CASE("the enlargement's tables: starts are truncated towards zero, rows sum to 1") {
  const ResampleTable table = EnlargementTable(3, 2);
  CHECK(table.taps == 9);
  CHECK(table.start == std::vector<int32_t>{-4, -4, -4, -3, -3, -2});
  for (auto row = table.weights.begin(); row < table.weights.end(); row += 9)
    CHECK(std::accumulate(row, row + 9, 0.0) == doctest::Approx(1).epsilon(1e-6));
  // A reduction by 2 with the filter stretched spans twice as many pixels as without.
  ResampleTable plain, wide;
  LanczosWeights(plain, 4, 13, 3, 2, 0.5, false);
  LanczosWeights(wide, 4, 13, 3, 2, 0.5, true);
  CHECK((plain.weights[2] == 0 && wide.weights[2] != 0));
}

TEST_CASE("resampling: inner positions are plain sums, cut ones are divided by the weight inside") {
  const matrix plane = RandomPlane(11, 1, 3);
  const ResampleTable across = EnlargementTable(11, 3), down = EnlargementTable(1, 1);
  matrix large;
  ResampleSeparable(plane, large, across, down);
  REQUIRE(large.m == 33);
  for (int32_t k = 0; k < 33; ++k) {
    double sum = 0, inside = 0;  // which is 1 where nothing is cut
    for (int32_t j = 0; j < 9; ++j) {
      const int32_t i = across.start[k] + j;
      const auto weight = static_cast<double>(across.weights[9 * k + j]);
      if (i >= 0 && i < 11) sum += weight * static_cast<double>(plane.x[i]), inside += weight;
    }
    CHECK(static_cast<double>(large.x[k]) == doctest::Approx(sum / inside).epsilon(1e-5));
  }
}
