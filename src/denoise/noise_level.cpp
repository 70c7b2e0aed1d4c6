#include "denoise/noise_level.h"

#include <bit>
#include <cmath>
#include <vector>

#include "platform/team.h"

namespace norv {
namespace {

// Not negative, so that its bits are ordered as it is.
uint32_t DifferenceAt(const matrix& plane, int64_t r, int64_t c) {
  const float *above = plane.z[r] + c, *below = plane.z[r + 1] + c;
  return std::bit_cast<uint32_t>(std::abs(above[0] - above[1] - below[0] + below[1]));
}

// How often each half of the bits occurs: the upper halves of all differences, or the lower ones behind one upper half.
std::vector<int64_t> CountHalves(const matrix& plane, int threads, int64_t upper) {
  constexpr size_t kHalves = size_t{1} << 16;
  std::vector<std::vector<int64_t>> counts(static_cast<size_t>(threads));
  ParallelFor(threads, threads, [&](int64_t member) {
    std::vector<int64_t> own(kHalves);
    const Range rows = StaticPart(plane.n - 1, static_cast<int>(member), threads);
    for (int64_t r = rows.begin; r < rows.end; ++r)
      for (int64_t c = 0; c + 1 < plane.m; ++c) {
        const uint32_t bits = DifferenceAt(plane, r, c);
        if (upper < 0)
          ++own[bits >> 16];
        else if (bits >> 16 == upper)
          ++own[bits & 0xffff];
      }
    counts[member] = std::move(own);
  });
  std::vector<int64_t> sums(kHalves);
  for (const std::vector<int64_t>& own : counts)
    for (size_t i = 0; i < kHalves; ++i) sums[i] += own[i];
  return sums;
}

// The half that holds the difference of this rank, which becomes the rank among those of the half.
uint32_t HalfOfRank(const std::vector<int64_t>& counts, int64_t& rank) {
  uint32_t half = 0;
  for (; rank >= counts[half]; ++half) rank -= counts[half];
  return half;
}

}  // namespace

double EstimateNoise(const matrix& plane, int threads) {
  const int64_t count = (int64_t{plane.m} - 1) * (int64_t{plane.n} - 1);
  if (plane.mn == 0 || count == 0) return 0;
  int64_t rank = count / 2;
  const uint32_t upper = HalfOfRank(CountHalves(plane, threads, -1), rank);
  const uint32_t lower = HalfOfRank(CountHalves(plane, threads, upper), rank);
  return std::bit_cast<float>(upper << 16 | lower) / 2 / 0.6744897501960817;
}

}  // namespace norv
