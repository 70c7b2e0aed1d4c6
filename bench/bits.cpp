// The road to bytes against a memory copy of the same planes; the processor benchmark against a loop written in place.
#include <benchmark/benchmark.h>
#include <cstring>

#include "driver/benchmark.h"
#include "restore/bit_process.h"

using namespace norv;

namespace {

constexpr int32_t kSide = 4096;  // 16 megapixels

FloatImage Picture(int32_t format) {
  FloatImage image(kSide, kSide, format);
  for (int k = 0; k < 3; ++k)
    for (int32_t i = 0; i < image.count; ++i)
      image.plane[k].x[i] = static_cast<float>((i * (k + 3) + i / kSide * 7) % 290) - 12.0f;
  return image;
}

void CountPixels(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * int64_t{kSide} * kSide); }

void CopyPlanes(benchmark::State& state) {
  const FloatImage image = Picture(kDefaultFormat);
  FloatImage copy = image;
  for (auto _ : state) {
    for (int k = 0; k < 3; ++k)
      std::memcpy(copy.plane[k].x, image.plane[k].x, sizeof(float) * static_cast<size_t>(image.count));
    benchmark::ClobberMemory();
  }
  CountPixels(state);
}
BENCHMARK(CopyPlanes)->Unit(benchmark::kMillisecond);

void PasteToBytes(benchmark::State& state, int32_t format) {
  const FloatImage image = Picture(format);
  BitImage bits(kSide, kSide);
  std::memset(bits.pixels.get(), 0, static_cast<size_t>(bits.size));
  for (auto _ : state) {
    PasteToBitImage(bits, 0, 0, image, nullptr, 0, 0, 0, 0);
    benchmark::ClobberMemory();
  }
  CountPixels(state);
}
BENCHMARK_CAPTURE(PasteToBytes, display, kDefaultFormat)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(PasteToBytes, luminance, kLuminance)->Unit(benchmark::kMillisecond);

// The processor benchmark's product in a million repetitions, through its function.
constexpr uint32_t kProducts = 1000000;

void RepeatedDot(benchmark::State& state) {
  matrix a(kBenchmarkLength, 1), b(kBenchmarkLength, 1);
  FillAtRandom(a);
  FillAtRandom(b);
  for (auto _ : state) benchmark::DoNotOptimize(RepeatDot(a, b, kProducts, 1));
  state.SetItemsProcessed(state.iterations() * kProducts);
}
BENCHMARK(RepeatedDot)->Unit(benchmark::kMillisecond);

// The same sum in place, with a barrier in every pass.
void DotInPlace(benchmark::State& state) {
  typedef float Eight __attribute__((vector_size(32)));
  matrix a(kBenchmarkLength, 1), b(kBenchmarkLength, 1);
  FillAtRandom(a);
  FillAtRandom(b);
  for (auto _ : state) {
    for (uint32_t k = 0; k < kProducts; ++k) {
      const float *x = a.x, *y = b.x;
      asm volatile("" : "+r"(x), "+r"(y) : : "memory");
      Eight sum = {};
      for (int32_t i = 0; i < kBenchmarkLength; i += 8)
        sum += *reinterpret_cast<const Eight*>(y + i) * *reinterpret_cast<const Eight*>(x + i);
      float total = sum[0];
      for (int lane = 1; lane < 8; ++lane) total += sum[lane];
      benchmark::DoNotOptimize(total);
    }
  }
  state.SetItemsProcessed(state.iterations() * kProducts);
}
BENCHMARK(DotInPlace)->Unit(benchmark::kMillisecond);

}  // namespace
