// Mode 8: the dot product that it measures, and how often.
#include <atomic>

#include "driver/benchmark.h"
#include "support/levels.h"
#include "support/random_plane.h"
#include "support/test.h"

TEST_CASE("the benchmark's dot product sums eight lanes, then the rest into lane 0, then the lanes in order") {
  for (const VectorLevel level : AvailableLevels())
    for (int32_t length = 1; length <= 150; ++length) {
      const matrix a = RandomPlane(length, 1, length), b = RandomPlane(length, 1, length + 200);
      CHECK_MESSAGE(ProductKernelsOf(level).dot(a.x, b.x, length) == PlainDot(a, b), length, " elements");
    }
}

TEST_CASE(
    "the benchmark fills its vectors with numbers between 0 and 1 and computes every product, in teams of any size") {
  matrix a(kBenchmarkLength, 1), b(kBenchmarkLength, 1);
  FillAtRandom(a);
  FillAtRandom(b);
  for (int32_t i = 0; i < kBenchmarkLength; ++i) CHECK((a.x[i] >= 5e-9f && a.x[i] <= 1.0f && a.x[i] != b.x[i]));
  for (const int threads : {1, 3, 8}) {
    CHECK(RepeatDot(a, b, 1000, threads) == PlainDot(a, b));
    static std::atomic<int> products;
    products = 0;
    RepeatDot(a, b, 1000, threads, [](const float*, const float*, int64_t) {
      ++products;
      return 0.0f;
    });
    CHECK(products == 1000);
  }
}
