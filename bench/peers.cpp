// The same network by matrix libraries: float products in any order, fused where the machine can, and the library's own
// activation; inputs ready-made, 256 pixels a call. Compiled for this very machine, as their users would.
#include <benchmark/benchmark.h>
#ifdef NORV_PEER_EIGEN
#include <Eigen/Core>
#ifdef NORV_PEER_OPENBLAS
#include <cblas.h>
extern "C" void openblas_set_num_threads(int);
#endif

namespace {

using Eigen::ArrayXXf, Eigen::MatrixXf, Eigen::VectorXf;
constexpr int kPixels = 256;

struct Layer {
  MatrixXf weights;  // units x inputs
  VectorXf biases;
};

void Activate(MatrixXf& z, int64_t kind) {
  if (kind == 14)
    z = z.array().max(0.01f * z.array());
  else
    z = (1 + (-z.array()).exp()).inverse();
}

// multiply(weights, inputs, result) for every layer.
template <typename Multiply>
void EvaluateNet(benchmark::State& state, Multiply multiply) {
  const int sizes[] = {48, 64, 64, 4};
  Layer layers[3];
  MatrixXf rows[4];
  rows[0] = MatrixXf::Random(sizes[0], kPixels) / 2;
  for (int i = 0; i < 3; ++i) {
    layers[i] = {MatrixXf::Random(sizes[i + 1], sizes[i]) / std::sqrt(static_cast<float>(sizes[i])),
                 VectorXf::Random(sizes[i + 1]) / 2};
    rows[i + 1].resize(sizes[i + 1], kPixels);
  }
  for (auto _ : state) {
    for (int i = 0; i < 3; ++i) {
      multiply(layers[i].weights, rows[i], rows[i + 1]);
      rows[i + 1].colwise() += layers[i].biases;
      Activate(rows[i + 1], state.range(0));
    }
    benchmark::DoNotOptimize(rows[3].data());
    benchmark::ClobberMemory();
  }
  state.counters["pixel"] =
      benchmark::Counter(kPixels, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void PeerEigen(benchmark::State& state) {
  EvaluateNet(state, [](const MatrixXf& w, const MatrixXf& x, MatrixXf& z) { z.noalias() = w * x; });
}
BENCHMARK(PeerEigen)->ArgName("kind")->Arg(14)->Arg(1);

#ifdef NORV_PEER_OPENBLAS
void PeerOpenBlas(benchmark::State& state) {
  openblas_set_num_threads(1);
  EvaluateNet(state, [](const MatrixXf& w, const MatrixXf& x, MatrixXf& z) {
    cblas_sgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, static_cast<int>(w.rows()), kPixels,
                static_cast<int>(w.cols()), 1, w.data(), static_cast<int>(w.rows()), x.data(),
                static_cast<int>(x.rows()), 0, z.data(), static_cast<int>(z.rows()));
  });
}
BENCHMARK(PeerOpenBlas)->ArgName("kind")->Arg(14)->Arg(1);
#endif

}  // namespace
#endif
