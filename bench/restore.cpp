// The restoration of a 1-megapixel plane, in nanoseconds per pixel of the result and inner step, beside the machine's
// bandwidth and beside the same steps in separate passes.
#include <benchmark/benchmark.h>
#include <cmath>
#include <numeric>
#include <vector>

#include "platform/memory.h"
#include "raster/separable.h"
#include "restore/least_squares.h"
#include "restore/restore_plane.h"
#include "restore/terms/differences.h"

using namespace norv;

namespace {

constexpr int32_t kSteps = 17;

matrix Observed(int32_t side) {
  matrix plane(side, side);
  for (int32_t r = 0; r < side; ++r)
    for (int32_t c = 0; c < side; ++c)
      plane.z[r][c] = 128 + 50 * std::sin(0.05f * static_cast<float>(r + 2 * c)) + static_cast<float>((r ^ c) & 31);
  return plane;
}

RestoreParameters Parameters(int32_t type, int32_t factor, int32_t steps, int32_t iterations) {
  RestoreParameters p{};
  p.factor = factor;
  p.kernelCode = -1;
  p.lambdaCross = 0.06f;
  p.lambda = 0.035f;
  p.deltaCross = 5;
  p.delta = 3;
  p.shapeCross = p.shapeDot = 0.8f;
  p.steps = steps;
  p.iterations = iterations;
  p.orientationScale = 0.7f;
  p.type = type;
  return p;
}

struct Plane {
  matrix observed, enlarged;
  explicit Plane(int32_t factor, int32_t side = 1000) : observed(Observed(side / factor)) {
    ResampleSeparable(observed, enlarged, EnlargementTable(observed.m, factor), EnlargementTable(observed.n, factor));
  }
};

// Nanoseconds per pixel and step as a counter that is printed beside the time.
void CountSteps(benchmark::State& state, int64_t pixels, int64_t steps) {
  state.counters["ns_per_pixel_step"] =
      benchmark::Counter(1e-9 * static_cast<double>(state.iterations() * pixels * steps),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// Triad over arrays beyond every cache: bytes a second, the read of the written lines included.
void Bandwidth(benchmark::State& state) {
  const int64_t n = state.range(0) << 18;
  auto a = MakeAligned<float>(static_cast<size_t>(n)), b = MakeAligned<float>(static_cast<size_t>(n));
  auto c = MakeAligned<float>(static_cast<size_t>(n));
  std::fill_n(a.get(), n, 0.0f);
  std::fill_n(b.get(), n, 1.0f);
  std::fill_n(c.get(), n, 2.0f);
  for (auto _ : state) {
    for (int64_t i = 0; i < n; ++i) a[i] = b[i] + 3.0f * c[i];
    benchmark::DoNotOptimize(a.get());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * n * 16);
}
BENCHMARK(Bandwidth)->Arg(8)->Arg(256)->Unit(benchmark::kMillisecond);

// One update of an iteration, its weights standing: the plain type's, and the others'.
void Update(benchmark::State& state, int32_t factor) {
  Plane plane(factor);
  const RestoreParameters p = Parameters(4, factor, kSteps, 1);
  const FilterPair pair(*FilterOfKernelCode(p.kernelCode), factor, plane.observed.m, plane.observed.n);
  const RowRuns cut(plane.observed.n, factor);
  SolverScratch scratch(pair, cut);
  IsotropicTerm term(plane.enlarged.m, cut, {Rule::huber, p.lambda, p.delta});
  term.Weigh(plane.enlarged, StandingTeam::Alone());
  DifferenceTerm* terms[] = {&term};
  for (auto _ : state) {
    matrix x = plane.enlarged;
    StepTowardsMinimum(x, plane.observed, pair, terms, kSteps, scratch, StandingTeam::Alone());
    benchmark::DoNotOptimize(x.x);
  }
  CountSteps(state, plane.enlarged.mn, kSteps);
}
BENCHMARK_CAPTURE(Update, factor2, 2)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Update, factor3, 3)->Unit(benchmark::kMillisecond);

// The peer: every operation a pass of its own over whole planes.
class SeparatePasses {
 public:
  SeparatePasses(const matrix& observed, const matrix& start, int32_t factor, const matrix& weights)
      : x(start), observed_(observed), weights_(weights), w_(start.m), h_(start.n) {
    BuildTaps(taps_, factor, *FilterOfKernelCode(-1));
    for (matrix* plane : {&p_, &g_}) *plane = matrix(w_, h_);
    for (matrix* plane : {&s1_, &s2_, &q1_, &q2_}) *plane = matrix(w_ - 1, h_ - 1);
    q0_ = matrix(observed.m, observed.n);
  }

  void Solve(int32_t steps) {
    r0_ = observed_;
    ShrinkMatrix(q0_, x, taps_);
    Add(r0_, -1, q0_);
    Differences(x);
    s1_.fill(0);
    s2_.fill(0);
    Add(s1_, -1, q1_);
    Add(s2_, -1, q2_);
    double rho = Gradient();
    p_ = g_;
    for (int32_t step = 0; step < steps; ++step) {
      Differences(p_);
      ShrinkMatrix(q0_, p_, taps_);
      const float alpha = static_cast<float>(rho / (Squares(q0_) + Squares(q1_) + Squares(q2_)));
      Add(x, alpha, p_);
      Add(s1_, -alpha, q1_);
      Add(s2_, -alpha, q2_);
      Add(r0_, -alpha, q0_);
      const double next = Gradient();
      const float beta = static_cast<float>(next / rho);
      for (int32_t i = 0; i < p_.mn; ++i) p_.x[i] = beta * p_.x[i] + g_.x[i];
      rho = next;
    }
  }

  matrix x;

 private:
  static void Add(matrix& y, float s, const matrix& a) {
    for (int32_t i = 0; i < y.mn; ++i) y.x[i] += s * a.x[i];
  }
  static double Squares(const matrix& a) {
    double sums[8] = {};
    int32_t i = 0;
    for (; i + 8 <= a.mn; i += 8)
      for (int k = 0; k < 8; ++k) sums[k] += static_cast<double>(a.x[i + k] * a.x[i + k]);
    for (; i < a.mn; ++i) sums[0] += static_cast<double>(a.x[i] * a.x[i]);
    return std::accumulate(sums, sums + 8, 0.0);
  }
  void Differences(const matrix& p) {
    for (int32_t r = 0; r + 1 < h_; ++r)
      for (int32_t c = 0; c + 1 < w_; ++c) {
        q1_.z[r][c] = weights_.z[r][c] * (p.z[r + 1][c + 1] - p.z[r][c]);
        q2_.z[r][c] = weights_.z[r][c] * (p.z[r][c + 1] - p.z[r + 1][c]);
      }
  }
  // g = E r0: along columns, then along rows.
  void Spread() {
    const int32_t factor = w_ / r0_.m, offset = (taps_.mn - factor) / 2;
    matrix narrow(r0_.m, h_);
    narrow.fill(0);
    for (int32_t r = 0; r < r0_.n; ++r)
      for (int32_t i = 0; i < taps_.mn; ++i) {
        float* to = narrow.z[MirrorIndex(int64_t{factor} * r - offset + i, h_)];
        for (int32_t c = 0; c < r0_.m; ++c) to[c] += taps_.x[i] * r0_.z[r][c];
      }
    g_.fill(0);
    for (int32_t r = 0; r < h_; ++r)
      for (int32_t c = 0; c < r0_.m; ++c)
        for (int32_t i = 0; i < taps_.mn; ++i)
          g_.z[r][MirrorIndex(int64_t{factor} * c - offset + i, w_)] += taps_.x[i] * narrow.z[r][c];
  }
  double Gradient() {
    Spread();
    for (int32_t r = 0; r + 1 < h_; ++r) {
      for (int32_t c = 0; c + 1 < w_; ++c) {
        const float a = weights_.z[r][c] * s1_.z[r][c], b = weights_.z[r][c] * s2_.z[r][c];
        g_.z[r + 1][c + 1] += a;
        g_.z[r][c] -= a;
        g_.z[r][c + 1] += b;
        g_.z[r + 1][c] -= b;
      }
    }
    return Squares(g_);
  }

  const matrix &observed_, &weights_;
  int32_t w_, h_;
  matrix taps_, p_, g_, s1_, s2_, q1_, q2_, r0_, q0_;
};

void UpdateInSeparatePasses(benchmark::State& state, int32_t factor) {
  Plane plane(factor);
  matrix weights;
  WeighIsotropic(weights, plane.enlarged, {Rule::huber, 0.035f, 3}, StandingTeam::Alone());
  for (auto _ : state) {
    SeparatePasses solver(plane.observed, plane.enlarged, factor, weights);
    solver.Solve(kSteps);
    benchmark::DoNotOptimize(solver.x.x);
  }
  CountSteps(state, plane.enlarged.mn, kSteps);
}
BENCHMARK_CAPTURE(UpdateInSeparatePasses, factor2, 2)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(UpdateInSeparatePasses, factor3, 3)->Unit(benchmark::kMillisecond);

// Whole iterations of every type. The difference between steps 17 and 1 over 16 is a step; what remains of 1 is the
// weights, the field and the start.
void Iteration(benchmark::State& state) {
  Plane plane(2);
  const RestoreParameters p =
      Parameters(static_cast<int32_t>(state.range(0)), 2, static_cast<int32_t>(state.range(1)), 2);
  for (auto _ : state) {
    matrix x = plane.enlarged;
    restore(x, BitMask(), plane.observed, p, nullptr);
    benchmark::DoNotOptimize(x.x);
  }
  CountSteps(state, plane.enlarged.mn, 2 * p.steps);
}
BENCHMARK(Iteration)->ArgsProduct({{-1, 1, 2, 5, 6, 7}, {1, 17}})->Unit(benchmark::kMillisecond);

// The weights and the field of one iteration.
void Orientation(benchmark::State& state) {
  const Plane plane(2);
  OrientationField field;
  for (auto _ : state) {
    FindOrientation(field, plane.enlarged, 1.4, StandingTeam::Alone());
    benchmark::DoNotOptimize(field.u1.x);
  }
  CountSteps(state, plane.enlarged.mn, 1);
}
BENCHMARK(Orientation)->Unit(benchmark::kMillisecond);

void Weights(benchmark::State& state, Rule rule) {
  const Plane plane(2);
  OrientationField field;
  FindOrientation(field, plane.enlarged, 1.4, StandingTeam::Alone());
  matrix w;
  for (auto _ : state) {
    WeighCross(w, plane.enlarged, field, {rule, 0.06f, 1, 0.8f}, StandingTeam::Alone());
    benchmark::DoNotOptimize(w.x);
  }
  CountSteps(state, plane.enlarged.mn, 1);
}
BENCHMARK_CAPTURE(Weights, huber, Rule::huber)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Weights, lorentzian, Rule::lorentzian)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Weights, shaped, Rule::shaped)->Unit(benchmark::kMillisecond);

// A whole plane, 12 iterations of 17 steps, plain type.
void WholePlane(benchmark::State& state) {
  Plane plane(2);
  const RestoreParameters p = Parameters(-1, 2, kSteps, 12);
  for (auto _ : state) {
    matrix x = plane.enlarged;
    restore(x, BitMask(), plane.observed, p, nullptr);
    benchmark::DoNotOptimize(x.x);
  }
  CountSteps(state, plane.enlarged.mn, 12 * kSteps);
}
BENCHMARK(WholePlane)->Unit(benchmark::kMillisecond);

// The same of 4 megapixels on a team: what a thread adds, in wall-clock time.
void OnThreads(benchmark::State& state) {
  Plane plane(2, 2048);
  StandingTeam team(static_cast<int32_t>(state.range(1)));
  const RestoreParameters p = Parameters(static_cast<int32_t>(state.range(0)), 2, kSteps, 2);
  for (auto _ : state) {
    matrix x = plane.enlarged;
    restore(x, BitMask(), plane.observed, p, nullptr, team);
    benchmark::DoNotOptimize(x.x);
  }
  CountSteps(state, plane.enlarged.mn, 2 * p.steps);
}
BENCHMARK(OnThreads)->ArgsProduct({{-1, 5}, {1, 2, 4, 16}})->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
