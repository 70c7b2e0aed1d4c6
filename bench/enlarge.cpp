// The road of a plane through a network, ns a source pixel: against the record's own evaluation and the packed
// evaluation without any road, plain against averaged, bands against one thread.
#include "net/enlarge.h"

#include <benchmark/benchmark.h>

#include "net/forward.h"
#include "net/layouts.h"
#include "net/packed_net.h"
#include "networks.h"

namespace norv {
namespace {

constexpr int32_t kSide = 1000;      // of the plane that is enlarged
constexpr int32_t kRecordSide = 64;  // of the one that the record evaluates pixel by pixel
constexpr int64_t kInputs = 48;

matrix MakePlane(int32_t side) {
  Values values;
  matrix plane(side, side);
  for (int32_t i = 0; i < plane.mn; ++i) plane.x[i] = 255 * (values.Next() + 0.5f);
  return plane;
}

void CountPixels(benchmark::State& state, int64_t pixels) {
  state.counters["pixel"] = benchmark::Counter(
      static_cast<double>(pixels), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void RecordPixelByPixel(benchmark::State& state) {
  NeuralNet net = MakeNet(static_cast<int32_t>(state.range(0)));
  const matrix plane = MakePlane(kRecordSide);
  const InputLayout& layout = *FindLayout(kInputs);
  const TapOffsets taps = OrientedOffsets(layout, 0, kRecordSide);
  matrix input(kInputs, 1), result(2 * kRecordSide, 2 * kRecordSide);
  const int32_t inner = kRecordSide - 6;
  for (auto _ : state)
    for (int32_t r = 3; r < kRecordSide - 3; ++r)
      for (int32_t c = 3; c < kRecordSide - 3; ++c) {
        GatherInputs(layout, taps, &plane.z[r][c], input.x);
        ForwardPass(net, input, 1);
        for (int32_t i = 0; i < 4; ++i)
          result.z[2 * r + i / 2][2 * c + i % 2] = 255 * net.layers[2].units[i].a + plane.z[r][c];
      }
  CountPixels(state, inner * inner);
}

void PackedEvaluationAlone(benchmark::State& state) {
  const PackedNet net(MakeNet(static_cast<int32_t>(state.range(0))));
  PackedNet::Scratch scratch(net);
  Values values;
  for (int64_t i = 0; i < kInputs * kPixelsPerBlock; ++i) scratch.Input(0)[i] = values.Next();
  for (auto _ : state) benchmark::DoNotOptimize(net.EvaluateBlock(scratch, kPixelsPerBlock));
  CountPixels(state, kPixelsPerBlock);
}

void Plane(benchmark::State& state) {
  const NeuralNet net = MakeNet(static_cast<int32_t>(state.range(0)));
  const matrix plane = MakePlane(kSide);
  matrix result;
  for (auto _ : state) NetEnlargeChannel(net, plane, result);
  CountPixels(state, plane.mn);
}

void PlaneAveraged(benchmark::State& state) {
  const NeuralNet net = MakeNet(static_cast<int32_t>(state.range(0)));
  const matrix plane = MakePlane(kSide);
  matrix result;
  for (auto _ : state) NetEnlargeChannelAveraged(net, plane, result);
  CountPixels(state, plane.mn);
}

// A three-plane image on as many threads as asked for, wall time.
void Image(benchmark::State& state) {
  const NeuralNet net = MakeNet(static_cast<int32_t>(state.range(0)));
  FloatImage source(kSide, kSide, kDefaultFormat);
  for (matrix& plane : source.plane)
    if (plane.mn != 0) plane = MakePlane(kSide);
  for (auto _ : state) {
    state.PauseTiming();
    FloatImage image = source;
    state.ResumeTiming();
    NetEnlargeImage(image, net, false, false, static_cast<int32_t>(state.range(1)));
  }
  CountPixels(state, 3 * source.count);
}

// Kind 14 is a ramp, kind 1 the logistic function.
BENCHMARK(RecordPixelByPixel)->ArgName("kind")->Arg(14)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(PackedEvaluationAlone)->ArgName("kind")->Arg(14)->Arg(1);
BENCHMARK(Plane)->ArgName("kind")->Arg(14)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(PlaneAveraged)->ArgName("kind")->Arg(14)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(Image)
    ->ArgNames({"kind", "threads"})
    ->ArgsProduct({{14, 1}, {1, 4}})
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace norv
