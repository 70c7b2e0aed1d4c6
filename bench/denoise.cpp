// The denoisers and their parts on a noisy scene, one thread. Gains on photographs: bench/denoise_peers.py.
#include <benchmark/benchmark.h>
#include <cmath>

#include "denoise/component_filter.h"
#include "denoise/components.h"
#include "denoise/group_filter.h"
#include "denoise/low_rank.h"
#include "denoise/patch_search.h"
#include "linear/random.h"

using namespace norv;

namespace {

constexpr double kSigma = 20;

// Edges and stripes under noise that is even, not normal: the work is the same.
matrix NoisyScene(int32_t width, int32_t height) {
  RandomGenerator random;
  matrix plane(width, height);
  for (int32_t r = 0; r < height; ++r)
    for (int32_t c = 0; c < width; ++c) {
      const double scene = 90 + (c / 40 % 2 == r / 50 % 2 ? 60 : 0) + 20 * std::sin(0.3 * r + 0.1 * c);
      plane.z[r][c] = static_cast<float>(scene + kSigma * std::sqrt(12.0) * (random.Next() / 10000.0 - 0.5));
    }
  return plane;
}

void CountPixels(benchmark::State& state, const matrix& plane) {
  state.SetItemsProcessed(state.iterations() * plane.mn);
}

void LearnAndFilter(benchmark::State& state, bool hard) {
  const matrix noisy = NoisyScene(512, 512);
  const int32_t side = static_cast<int32_t>(state.range(0));
  matrix components;
  for (auto _ : state) {
    matrix plane = noisy;
    LearnComponents(plane, side, 1, components);
    FilterByComponents(plane, kSigma, components, {side, 0, hard, 1});
    benchmark::DoNotOptimize(plane.x);
  }
  CountPixels(state, noisy);
}
BENCHMARK_CAPTURE(LearnAndFilter, threshold, true)->Arg(4)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LearnAndFilter, guided, false)->Arg(4)->Arg(8)->Arg(16)->Unit(benchmark::kMillisecond);

// One iteration.
void Groups(benchmark::State& state, bool twoStep) {
  const matrix noisy = NoisyScene(192, 168);
  const int32_t side = static_cast<int32_t>(state.range(0));
  for (auto _ : state) {
    matrix plane = noisy;
    FilterGroups({{&plane, kSigma}}, {1, side, 2.83, 0.1, false, twoStep, 1});
    benchmark::DoNotOptimize(plane.x);
  }
  CountPixels(state, noisy);
}
BENCHMARK_CAPTURE(Groups, full, false)->Arg(6)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Groups, twoStep, true)->Arg(6)->Arg(8)->Unit(benchmark::kMillisecond);

void Search(benchmark::State& state) {
  const PatchPlane plane(NoisyScene(192, 168));
  PatchSearch search(plane, 6, {static_cast<int32_t>(state.range(0)), 1});
  std::vector<uint32_t> found;
  for (auto _ : state) search.Find(80, 90, 70, found);
}
BENCHMARK(Search)->Arg(12)->Arg(20)->Unit(benchmark::kMicrosecond);

void Approximate(benchmark::State& state) {
  const matrix noisy = NoisyScene(static_cast<int32_t>(state.range(0) * state.range(0)), 70);
  LowRank lowRank;
  for (auto _ : state) {
    matrix vectors = noisy;
    benchmark::DoNotOptimize(lowRank.Approximate(vectors.x, vectors.m, vectors.n, kSigma, 2.83f));
  }
}
BENCHMARK(Approximate)->Arg(6)->Arg(8)->Arg(12)->Unit(benchmark::kMicrosecond);

}  // namespace
