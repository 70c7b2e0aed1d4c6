// Training sample by sample, ns a sample on one core: the record's plain functions, the rows, and, where installed, the
// same network in FANN and in a hand-written Eigen loop. limit: what the machine's separate multiplications and
// additions allow for 4 flops a first-layer weight and 6 flops a later one.
#include <benchmark/benchmark.h>
#ifdef NORV_BENCH_FANN
#include <floatfann.h>
#endif

#include "networks.h"
#include "train/row_net.h"
#include "train/train.h"
#include "train_peers.h"

namespace norv {
namespace {

constexpr int32_t kSamples = 4096;
constexpr float kRate = 0.001f;

using Sizes = std::array<int32_t, kMaxLayers>;
constexpr Sizes kShapes[] = {{32, 16, 4}, {64, 64, 4}, {64, 4}};

struct Work {
  NeuralNet net;
  TrainingSet set;

  Work(const Sizes& shape, int32_t kind) {
    net = MakeNet(kind, shape);
    Values values;
    CreateTrainingSet(set, kSamples, 48, net.LastNi());
    for (int64_t i = 0; i < kSamples * set.RecordFloats(); ++i) set.block[i] = 0.2f * values.Next();
  }

  std::vector<int> Shape() const {
    std::vector<int> sizes{net.N0};
    for (const NetLayer& layer : net.layers) sizes.push_back(layer.Ni);
    return sizes;
  }
};

void CountSamples(benchmark::State& state) {
  state.counters["sample"] =
      benchmark::Counter(kSamples, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void Learn(benchmark::State& state, Trainer& trainer, const TrainingSet& set) {
  trainer.SetRate(kRate, 0);
  for (auto _ : state)
    for (int64_t i = 0; i < set.N; ++i) trainer.Learn(set.Input(i), set.Target(i));
  CountSamples(state);
}

void TrainRecord(benchmark::State& state) {
  Work work(kShapes[state.range(0)], static_cast<int32_t>(state.range(1)));
  Learn(state, *MakeRecordTrainer(work.net, 0, 0, 1), work.set);
}

void TrainRows(benchmark::State& state) {
  Work work(kShapes[state.range(0)], static_cast<int32_t>(state.range(1)));
  RowNet rows(work.net, 0, 0, 1);
  Learn(state, rows, work.set);
}

void TrainEigen(benchmark::State& state) {
  const Work work(kShapes[state.range(0)], 1);
  const auto peer = MakeEigenTrainer(work.Shape(), static_cast<int>(state.range(1)));
  if (!peer) return state.SkipWithError("Eigen is not installed");
  for (auto _ : state)
    for (int64_t i = 0; i < kSamples; ++i) peer->Learn(work.set.Input(i), work.set.Target(i), kRate);
  CountSamples(state);
}

#ifdef NORV_BENCH_FANN
void TrainFann(benchmark::State& state) {
  Work work(kShapes[state.range(0)], 1);
  std::vector<unsigned> sizes;
  for (const int size : work.Shape()) sizes.push_back(static_cast<unsigned>(size));
  fann* net = fann_create_standard_array(static_cast<unsigned>(sizes.size()), sizes.data());
  const bool logistic = state.range(1) == 1;
  fann_set_activation_function_hidden(net, logistic ? FANN_SIGMOID : FANN_LINEAR);
  fann_set_activation_function_output(net, logistic ? FANN_SIGMOID : FANN_LINEAR);
  fann_set_training_algorithm(net, FANN_TRAIN_INCREMENTAL);
  fann_set_learning_rate(net, kRate);
  fann_randomize_weights(net, -0.1f, 0.1f);
  for (auto _ : state)
    for (int64_t i = 0; i < kSamples; ++i) fann_train(net, work.set.Record(i), work.set.Record(i) + work.set.Nin);
  CountSamples(state);
  fann_destroy(net);
}
#endif

void Limit(benchmark::State& state) {
  const Work work(kShapes[state.range(0)], 1);
  const std::vector<int> sizes = work.Shape();
  double flops = 0;
  for (size_t k = 1; k < sizes.size(); ++k) flops += (k == 1 ? 4.0 : 6.0) * sizes[k] * sizes[k - 1];
  constexpr int64_t kOperations = 1 << 22;
  for (auto _ : state) MultiplyAndAddApart(kOperations);
  state.counters["sample"] =
      benchmark::Counter(static_cast<double>(kOperations) / flops,
                         benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void Cases(benchmark::internal::Benchmark* b) {
  b->ArgNames({"shape", "kind"});
  for (const int64_t shape : {0, 1, 2})
    for (const int64_t kind : {1, 14}) b->Args({shape, kind});
}

BENCHMARK(TrainRecord)->Apply(Cases);
BENCHMARK(TrainRows)->Apply(Cases);
BENCHMARK(TrainEigen)->Apply(Cases);
#ifdef NORV_BENCH_FANN
BENCHMARK(TrainFann)->Apply(Cases);
#endif
BENCHMARK(Limit)->ArgName("shape")->DenseRange(0, 2);

}  // namespace
}  // namespace norv
