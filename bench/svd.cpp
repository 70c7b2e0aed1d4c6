// Decompositions and products of the sizes that patches have, beside Eigen's where that is installed (built with the
// same flags, so without fused multiply-add).
#include <benchmark/benchmark.h>
#include <utility>

#include "linear/dmatrix.h"
#include "linear/random.h"
#include "linear/symmetric.h"

#if __has_include(<eigen3/Eigen/Dense>)
#include <eigen3/Eigen/Dense>
#define NORV_PEER 1
#endif

using namespace norv;

namespace {

dmatrix Random(int64_t m, int64_t n) {
  RandomGenerator random;
  dmatrix a(static_cast<int32_t>(m), static_cast<int32_t>(n));
  for (int32_t i = 0; i < a.mn; ++i) a.x[i] = (random.Next() - 5000) * 0.01;
  return a;
}

dmatrix Gram(int64_t n) {
  const dmatrix a = Random(2 * n, n);
  dmatrix gram(a.n, a.n);
  gram.multTA(a, a);
  return gram;
}

void Shapes(benchmark::internal::Benchmark* b) {
  for (auto [m, n] : {std::pair{3, 3}, {36, 36}, {70, 36}, {36, 70}, {200, 36}, {64, 64}, {200, 64}}) b->Args({m, n});
  b->Unit(benchmark::kMicrosecond);
}

void Svd(benchmark::State& state) {
  const dmatrix a = Random(state.range(0), state.range(1));
  dmatrix U, W, V;
  for (auto _ : state) a.svd(U, W, V);
}
BENCHMARK(Svd)->Apply(Shapes);

void Eigenvectors(benchmark::State& state) {
  const dmatrix a = Gram(state.range(0));
  dmatrix values(a.n, 1), vectors(a.n, a.n);
  for (auto _ : state) {
    vectors.copydata(a);
    benchmark::DoNotOptimize(DecomposeSymmetric(a.n, vectors.x, values.x));
  }
}
BENCHMARK(Eigenvectors)->Arg(3)->Arg(36)->Arg(64)->Arg(256)->Unit(benchmark::kMicrosecond);

void ProductOf(benchmark::State& state) {
  const dmatrix a = Random(state.range(0), state.range(1)), b = Random(state.range(1), state.range(1));
  dmatrix product(a.m, b.n);
  for (auto _ : state) {
    product.mult(a, b);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(ProductOf)->Args({200, 64})->Unit(benchmark::kMicrosecond);

void ProductOfTransposed(benchmark::State& state) {
  const dmatrix a = Random(state.range(0), state.range(1));
  dmatrix product(a.n, a.n);
  for (auto _ : state) {
    product.multTA(a, a);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(ProductOfTransposed)->Args({200, 64})->Unit(benchmark::kMicrosecond);

#ifdef NORV_PEER

Eigen::MatrixXd Peer(const dmatrix& a) { return Eigen::Map<const Eigen::MatrixXd>(a.x, a.m, a.n); }

void PeerSvd(benchmark::State& state) {
  const Eigen::MatrixXd a = Peer(Random(state.range(0), state.range(1)));
  Eigen::BDCSVD<Eigen::MatrixXd> svd(a.rows(), a.cols(), Eigen::ComputeThinU | Eigen::ComputeThinV);
  for (auto _ : state) benchmark::DoNotOptimize(svd.compute(a));
}
BENCHMARK(PeerSvd)->Apply(Shapes);

void PeerEigenvectors(benchmark::State& state) {
  const Eigen::MatrixXd a = Peer(Gram(state.range(0)));
  Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(a.rows());
  for (auto _ : state) benchmark::DoNotOptimize(solver.compute(a));
}
BENCHMARK(PeerEigenvectors)->Arg(3)->Arg(36)->Arg(64)->Arg(256)->Unit(benchmark::kMicrosecond);

void PeerProduct(benchmark::State& state) {
  const Eigen::MatrixXd a = Peer(Random(state.range(0), state.range(1)));
  const Eigen::MatrixXd b = Peer(Random(state.range(1), state.range(1)));
  Eigen::MatrixXd product(a.rows(), b.cols());
  for (auto _ : state) {
    product.noalias() = a * b;
    benchmark::ClobberMemory();
  }
}
BENCHMARK(PeerProduct)->Args({200, 64})->Unit(benchmark::kMicrosecond);

#endif

}  // namespace
