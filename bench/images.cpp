// Conversion of a one-megapixel image from display RGB to each colour model and back, and the shuffle's sort.
#include <benchmark/benchmark.h>
#include <string>
#include <vector>

#include "image/float_image.h"
#include "linear/index_sort.h"
#include "linear/random.h"

using namespace norv;

namespace {

void ThereAndBack(benchmark::State& state) {
  FloatImage image(1024, 1024, kDefaultFormat);
  RandomGenerator random;
  for (int k = 0; k < 3; ++k)
    for (int32_t i = 0; i < image.count; ++i) image.plane[k].x[i] = static_cast<float>(random.Next()) * 0.0255f;
  const auto code = static_cast<int32_t>(state.range(0));
  state.SetLabel(FindModel(code)->name);
  for (auto _ : state) {
    image.ConvertTo(code);
    image.ConvertTo(kDefaultFormat);
  }
  state.SetItemsProcessed(2 * state.iterations() * image.count);
}
BENCHMARK(ThereAndBack)->Unit(benchmark::kMillisecond)->Apply([](benchmark::internal::Benchmark* b) {
  for (const ColourModel& model : ColourModels())
    if (model.code != kDisplay) b->Arg(model.code);
});

void SortMillionKeys(benchmark::State& state) {
  std::vector<float> keys(1000000);
  std::vector<int32_t> index(keys.size());
  RandomGenerator random;
  for (float& key : keys) {
    const int32_t low = random.Next(), high = random.Next();
    key = static_cast<float>((high * 10000 + low) * 1e-8 + 5e-9);
  }
  for (auto _ : state) IndexSort(index.data(), keys.data(), static_cast<int32_t>(keys.size()));
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(keys.size()));
}
BENCHMARK(SortMillionKeys)->Unit(benchmark::kMillisecond);

}  // namespace
