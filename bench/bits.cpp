// The road to bytes against a memory copy of the same planes.
#include <benchmark/benchmark.h>
#include <cstring>

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

}  // namespace
