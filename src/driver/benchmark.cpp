#include "driver/benchmark.h"

#include <algorithm>
#include <atomic>

#include "driver/modes.h"
#include "driver/report.h"
#include "linear/random.h"
#include "platform/clock.h"
#include "platform/console.h"
#include "platform/progress.h"
#include "platform/team.h"

namespace norv {
namespace {

// About a hundredth of a second between two looks at the clock.
constexpr int64_t kPart = 1 << 20;

void Measure(const char* heading, const matrix& a, const matrix& b, int threads) {
  const int32_t start = Clock();
  const float result = RepeatDot(a, b, kBenchmarkIterations, threads);
  Say("\n\n%siters = %u, N = %d, matrix: %e", heading, kBenchmarkIterations, kBenchmarkLength, result);
  SayElapsed(start);
}

}  // namespace

void FillAtRandom(matrix& vector) {
  for (int32_t i = 0; i < vector.mn; ++i) {
    const uint32_t r1 = static_cast<uint32_t>(NextRandom());
    const uint32_t r2 = static_cast<uint32_t>(NextRandom());
    vector.x[i] = static_cast<float>((r2 * 10000 + r1) * 1e-8 + 5e-9);
  }
}

float RepeatDot(const matrix& a, const matrix& b, uint32_t iterations, int threads, decltype(ProductKernels::dot) dot) {
  std::atomic<float> result{0};
  Progress progress("Multiplying", iterations);
  ParallelRanges(threads, iterations, [&](int64_t begin, int64_t end) {
    const matrix *left = &a, *right = &b;
    for (int64_t i = begin; i < end;) {
      const int64_t partEnd = std::min(end, i + kPart);
      for (int64_t k = i; k < partEnd; ++k) {
        // After this line both vectors may be others, so that no product can stand for the next.
        asm volatile("" : "+r"(left), "+r"(right) : : "memory");
        result.store(dot(left->x, right->x, left->mn), std::memory_order_relaxed);
      }
      progress.Advance(partEnd - i);
      i = partEnd;
    }
  });
  return result;
}

Ending RunBenchmark(const Request&) {
  matrix a(kBenchmarkLength, 1), b(kBenchmarkLength, 1);
  FillAtRandom(a);
  FillAtRandom(b);
  Measure("", a, b, 1);
  Measure("parallel:\n", a, b, kBenchmarkThreads);
  WaitForKeys(1);
  return Ending::silent;
}

}  // namespace norv
