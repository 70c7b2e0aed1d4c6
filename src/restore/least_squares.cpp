#include "restore/least_squares.h"

#include <algorithm>
#include <cmath>

#include "simd/restore/kernels.h"

namespace norv {
namespace {

class Solver {
 public:
  Solver(const matrix& y, const FilterPair& pair, std::span<DifferenceTerm* const> terms, SolverScratch& scratch,
         StandingTeam& team)
      : y_(y), pair_(pair), terms_(terms), scratch_(scratch), team_(team), kernels_(ActiveRestoreKernels()) {}

  // r0 = y - R x, s = -D x, g = R' r0 + D' s, p = 0; the sum of g^2.
  float Start(const matrix& x) {
    ForRuns([&](SolverRun& run) {
      for (DifferenceTerm* term : terms_) term->Clear(run.number);
      for (int64_t i = run.residual.Window().begin; i < run.residual.Window().end; ++i)
        std::copy_n(y_.z[i], y_.m, run.residual[i]);
      for (int64_t i = run.smallRows.begin; i < run.smallRows.end; ++i) Reduce(x, i, run);
    });
    ExchangeRows(scratch_.peers, scratch_.reducedDirection, scratch_.smallRows);
    const float sum = Backward(nullptr, &x, 1);
    ForRuns([&](SolverRun& run) {
      for (int64_t r = run.direction.Window().begin; r < run.direction.Window().end; ++r)
        std::fill_n(run.direction[r], x.m, 0.0f);
    });
    return sum;
  }

  // p = beta p + g, q0 = R p; the sum of the squares of q0 and of every D p.
  float Forward(float beta) {
    const float sum = Sum([&](SolverRun& run) { ForwardRun(run, beta); });
    ExchangeRows(scratch_.peers, scratch_.reducedDirection, scratch_.smallRows);
    return sum;
  }

  // x += alpha p (x may be missing), r0 -= alpha q0, s -= alpha D p, g = R' r0 + D' s; the sum of g^2. p: another plane
  // in place of the direction, or null.
  float Backward(matrix* x, const matrix* p, float alpha) {
    const float sum =
        Sum([&](SolverRun& run) { BackwardRun(run, x, p ? PlaneRows(*p) : run.direction.Rows(), alpha); });
    ExchangeRows(scratch_.peers, scratch_.gradient, scratch_.largeRows);
    return sum;
  }

  // x += alpha p alone.
  void Finish(matrix& x, float alpha) {
    ForRuns([&](SolverRun& run) {
      kernels_.addScaled(x.z[run.rows.begin], alpha, scratch_.direction.z[run.rows.begin],
                         (run.rows.end - run.rows.begin) * x.m);
    });
  }

 private:
  template <typename Work>
  void ForRuns(const Work& work) {
    team_.ForEach(std::ssize(scratch_.runs), [&](int64_t i) { work(scratch_.runs[static_cast<size_t>(i)]); });
  }

  // The work on all runs, and the sum of what it found of every block, in the order of the blocks.
  template <typename Work>
  float Sum(const Work& work) {
    ForRuns([&](SolverRun& run) {
      for (int64_t b = run.blocks.begin; b < run.blocks.end; ++b) SumOf(b) = {};
      work(run);
    });
    GatherBlocks(scratch_.peers, std::as_writable_bytes(std::span(scratch_.sums)), sizeof(SquareSum), scratch_.cut);
    SquareSum sum = SumOf(0);
    for (int64_t b = 1; b < scratch_.cut.Blocks(); ++b) sum.Add(SumOf(b));
    return FromFirst(scratch_.peers, sum.Total());
  }
  SquareSum& SumOf(int64_t block) { return scratch_.sums[static_cast<size_t>(block)]; }
  double* SumsOfRow(int64_t r) { return SumOf(scratch_.cut.BlockOf(r)).parts; }

  void Reduce(const PlaneRows& p, int64_t i, SolverRun& run) {
    pair_.ReduceRow(p, static_cast<int32_t>(i), scratch_.reducedDirection.z[i], run.lines);
  }

  // Rows of q0 are made as soon as the rows of p are there; what is squared of them waits until the block's differences
  // have been, so that a block's sum has one order whatever the filter's reach.
  void ForwardRun(SolverRun& run, float beta) {
    const PlaneRows p = run.direction.Rows();
    const Range window = run.direction.Window();
    int64_t reduced = run.smallRows.begin, block = run.blocks.begin;
    const auto closeBlocks = [&](int64_t squared) {
      for (; block < run.blocks.end; ++block) {
        const Range one{block, block + 1}, small = scratch_.cut.SmallRows(one);
        if (squared < scratch_.cut.Rows(one).end || reduced < small.end) return;
        kernels_.addSquares(SumOf(block).parts, scratch_.reducedDirection.z[small.begin],
                            (small.end - small.begin) * y_.m);
      }
    };
    for (int64_t r = window.begin; r < window.end; ++r) {
      kernels_.scaleAndAdd(run.direction[r], beta, scratch_.gradient.z[r], p.m);
      for (; reduced < run.smallRows.end && pair_.LastSource(static_cast<int32_t>(reduced)) <= r; ++reduced)
        Reduce(p, reduced, run);
      if (r > run.rows.begin && r <= run.rows.end) AddSquares(p, r - 1);
      closeBlocks(r);
    }
    if (run.rows.end == p.n) AddSquares(p, p.n - 1);
    closeBlocks(run.rows.end);
  }

  void AddSquares(const PlaneRows& p, int64_t r) {
    for (const DifferenceTerm* term : terms_) term->AddSquares(SumsOfRow(r), p, static_cast<int32_t>(r));
  }

  // The row above the run's own ones is stepped too, for the sake of what its differences add to the first one.
  void BackwardRun(SolverRun& run, matrix* x, const PlaneRows& p, float alpha) {
    int64_t stepped = run.residual.Window().begin;
    run.lines.Begin(stepped);
    const auto formGradient = [&](int64_t r) {
      for (; stepped <= pair_.LastShare(r); ++stepped)
        kernels_.addScaled(run.residual[stepped], -alpha, scratch_.reducedDirection.z[stepped], y_.m);
      FormGradient(run, r);
    };
    for (int64_t r = std::max<int64_t>(run.rows.begin - 1, 0); r < run.rows.end; ++r) {
      if (x && r >= run.rows.begin) kernels_.addScaled(x->z[r], alpha, p[r], p.m);
      for (DifferenceTerm* term : terms_) term->Step(p, static_cast<int32_t>(r), alpha, run.number);
      if (r > run.rows.begin) formGradient(r - 1);
    }
    formGradient(run.rows.end - 1);
  }

  void FormGradient(SolverRun& run, int64_t r) {
    float* g = scratch_.gradient.z[r];
    pair_.AdjointRow(run.residual.Rows(), r, g, run.lines);
    for (const DifferenceTerm* term : terms_) term->AddAdjoint(g, static_cast<int32_t>(r), run.number);
    kernels_.addSquares(SumsOfRow(r), g, scratch_.gradient.m);
  }

  const matrix& y_;
  const FilterPair& pair_;
  std::span<DifferenceTerm* const> terms_;
  SolverScratch& scratch_;
  StandingTeam& team_;
  const RestoreKernels& kernels_;
};

// Advances the progress by the steps that a solver takes, and by those that it turned out not to need when it ends.
class StepCount {
 public:
  StepCount(Progress* progress, int32_t steps) : progress_(progress), left_(steps) {}
  ~StepCount() { Advance(left_); }
  StepCount(const StepCount&) = delete;
  StepCount& operator=(const StepCount&) = delete;
  void Take() {
    Advance(1);
    --left_;
  }

 private:
  void Advance(int32_t steps) const {
    if (progress_) progress_->Advance(steps);
  }

  Progress* progress_;
  int32_t left_;
};

}  // namespace

SolverScratch::SolverScratch(const FilterPair& pair, const RowRuns& rowRuns, Peers& among)
    : direction(pair.Factor() * pair.SmallWidth(), pair.Factor() * pair.SmallHeight()),
      gradient(direction.m, direction.n),
      residual(pair.SmallWidth(), pair.SmallHeight()),
      reducedDirection(residual.m, residual.n),
      cut(rowRuns),
      sums(static_cast<size_t>(rowRuns.Blocks())),
      peers(among) {
  const auto rowsOf = [&](Range blocks) { return cut.Rows(blocks); };
  const auto smallOf = [&](Range blocks) { return cut.SmallRows(blocks); };
  // Differences look at the row below; those of the row above add to the first one.
  const auto largeSeen = [&](Range blocks) {
    const Range rows = cut.Rows(blocks);
    const Range around{std::max<int64_t>(rows.begin - 1, 0), std::min<int64_t>(rows.end + 1, direction.n)};
    return RowsTogether(around, pair.Sources(cut.SmallRows(blocks)));
  };
  const auto smallSeen = [&](Range blocks) {
    return RowsTogether(cut.SmallRows(blocks), pair.Shares(cut.Rows(blocks)));
  };
  largeRows = RowsOfEach(cut, rowsOf, largeSeen);
  smallRows = RowsOfEach(cut, smallOf, smallSeen);
  for (int32_t i = 0; i < cut.Runs(); ++i) {
    const Range blocks = cut.BlocksOf(i), rows = rowsOf(blocks), small = smallOf(blocks);
    runs.push_back({i,
                    blocks,
                    rows,
                    small,
                    {direction, rows, largeSeen(blocks)},
                    {residual, small, smallSeen(blocks)},
                    FilterLines(pair)});
  }
}

bool StepTowardsMinimum(matrix& x, const matrix& y, const FilterPair& pair, std::span<DifferenceTerm* const> terms,
                        int32_t steps, SolverScratch& scratch, StandingTeam& team, Progress* progress) {
  if (steps <= 0) return true;
  StepCount count(progress, steps);
  Solver solver(y, pair, terms, scratch, team);
  float rho = solver.Start(x), beta = 0;
  for (int32_t step = 0; step < steps; ++step) {
    const float denominator = solver.Forward(beta);
    if (denominator <= 0) break;
    const float alpha = rho / denominator;
    // Nothing but x is needed of the last step.
    if (step == steps - 1 || std::isnan(alpha)) {
      solver.Finish(x, alpha);
      return !std::isnan(alpha);
    }
    const float next = solver.Backward(&x, nullptr, alpha);
    if (rho <= 0) break;
    beta = next / rho;
    rho = next;
    count.Take();
  }
  return true;
}

}  // namespace norv
