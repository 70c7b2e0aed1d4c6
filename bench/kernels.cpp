// Network evaluation without any road around it, ns a pixel of the network 48-64-64-4: the packed form at each vector
// level against the record's own evaluation and against the machine's limit of separate multiplications and additions.
#include "simd/evaluate/kernels.h"

#include <algorithm>
#include <benchmark/benchmark.h>

#include "net/forward.h"
#include "net/packed_net.h"
#include "networks.h"
#include "peak.h"
#include "simd/levels.h"

namespace norv {
namespace {

constexpr int32_t kInputs = 48;
constexpr int64_t kOperations = 2 * (48 * 64 + 64 * 64 + 64 * 4);  // a pixel, activations not counted

void CountPixels(benchmark::State& state, double pixels) {
  state.counters["pixel"] =
      benchmark::Counter(pixels, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// The level that a benchmark asks for, until it ends. False, with the benchmark skipped, where the machine lacks it.
class Level {
 public:
  Level(benchmark::State& state, int64_t level) : isThere_(level <= static_cast<int64_t>(MachineLevel())) {
    if (!isThere_) {
      state.SkipWithError("this machine lacks the level");
      return;
    }
    ForceLevel(static_cast<VectorLevel>(level));
    state.SetLabel(NameOf(ActiveLevel()));
  }
  ~Level() { ForceLevel(before_); }
  Level(const Level&) = delete;
  Level& operator=(const Level&) = delete;
  explicit operator bool() const { return isThere_; }

 private:
  VectorLevel before_ = ActiveLevel();
  bool isThere_;
};

struct Peak {
  float (*rounds)(int64_t rounds);
  const int64_t& operations;
};
#define NORV_PEAK_OF(level, bytes, ...) {bytes_##bytes::PeakRounds, bytes_##bytes::kPeakOperations},
constexpr Peak kPeaks[] = {NORV_LEVELS(NORV_PEAK_OF, )};

// The time that the limit allows for the network's arithmetic alone.
void Limit(benchmark::State& state) {
  const Level level(state, state.range(0));
  if (!level) return;
  const Peak& peak = kPeaks[static_cast<int>(ActiveLevel())];
  constexpr int64_t kRounds = 1000;
  for (auto _ : state) benchmark::DoNotOptimize(peak.rounds(kRounds));
  const int64_t operations = kRounds * peak.operations;
  CountPixels(state, static_cast<double>(operations) / static_cast<double>(kOperations));
}

void Record(benchmark::State& state) {
  NeuralNet net = MakeNet(state.range(0));
  constexpr int kPixels = 64;
  Values values;
  matrix inputs(kInputs, kPixels), input(kInputs, 1);
  for (int32_t i = 0; i < inputs.mn; ++i) inputs.x[i] = values.Next();
  for (auto _ : state)
    for (int32_t p = 0; p < kPixels; ++p) {
      std::copy_n(inputs.z[p], kInputs, input.x);
      ForwardPass(net, input, 1);
      benchmark::DoNotOptimize(net.layers[2].units[3].a);
    }
  CountPixels(state, kPixels);
}

void Packed(benchmark::State& state) {
  const Level level(state, state.range(0));
  if (!level) return;
  const PackedNet net(MakeNet(state.range(1)));
  PackedNet::Scratch scratch(net);
  Values values;
  for (int64_t i = 0; i < kInputs * kPixelsPerBlock; ++i) scratch.Input(0)[i] = values.Next();
  for (auto _ : state) benchmark::DoNotOptimize(net.EvaluateBlock(scratch, kPixelsPerBlock));
  CountPixels(state, kPixelsPerBlock);
}

// One layer's products, and one activation kind over as many values.
void Products(benchmark::State& state) {
  const Level level(state, state.range(0));
  if (!level) return;
  const AlignedArray<float> rows = MakeAligned<float>(64 * kPixelsPerBlock), weights = MakeAligned<float>(64 * 65),
                            sums = MakeAligned<float>(64 * kPixelsPerBlock);
  Values values;
  for (int i = 0; i < 64 * kPixelsPerBlock; ++i) rows[i] = values.Next();
  for (int i = 0; i < 64 * 65; ++i) weights[i] = values.Next();
  for (auto _ : state) {
    ActiveEvaluateKernels().evaluateLayer(weights.get(), 64, 64, rows.get(), sums.get(), kPixelsPerBlock);
    benchmark::ClobberMemory();
  }
  state.counters["flops"] =
      benchmark::Counter(2 * 64 * 64 * kPixelsPerBlock, benchmark::Counter::kIsIterationInvariantRate);
}

void Activation(benchmark::State& state) {
  const Level level(state, state.range(0));
  if (!level) return;
  constexpr int64_t kCount = 64 * kPixelsPerBlock;
  const AlignedArray<float> sums = MakeAligned<float>(kCount), results = MakeAligned<float>(kCount);
  Values values;
  for (int64_t i = 0; i < kCount; ++i) sums[i] = 8 * values.Next();
  for (auto _ : state) {
    ActiveEvaluateKernels().activation[state.range(1)](sums.get(), results.get(), kCount);
    benchmark::ClobberMemory();
  }
  state.counters["value"] =
      benchmark::Counter(kCount, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

constexpr int64_t kLastLevel = std::size(kLevels) - 1;
BENCHMARK(Limit)->ArgName("level")->DenseRange(0, kLastLevel);
BENCHMARK(Record)->ArgName("kind")->Arg(14)->Arg(1);
BENCHMARK(Packed)->ArgNames({"level", "kind"})->ArgsProduct({benchmark::CreateDenseRange(0, kLastLevel, 1), {14, 1}});
BENCHMARK(Products)->ArgName("level")->DenseRange(0, kLastLevel);
BENCHMARK(Activation)
    ->ArgNames({"level", "kind"})
    ->ArgsProduct({benchmark::CreateDenseRange(0, kLastLevel, 1), {1, 2, 3, 8, 10, 11, 14, 15, 16, 17}});

}  // namespace
}  // namespace norv
