#include "restore/least_squares.h"

#include <algorithm>
#include <cmath>

#include "simd/restore/kernels.h"

namespace norv {
namespace {

// A sum of squares in the eight partial sums that the kernels add to; in the end these are added in order.
struct SquareSum {
  double parts[8] = {};
  float Total() const {
    double total = 0;
    for (const double part : parts) total += part;
    return static_cast<float>(total);
  }
};

class Solver {
 public:
  Solver(const matrix& y, FilterPair& pair, std::span<DifferenceTerm* const> terms, SolverScratch& scratch)
      : y_(y), pair_(pair), terms_(terms), scratch_(scratch), kernels_(ActiveRestoreKernels()) {}

  // r0 = y - R x, s = -D x, g = R' r0 + D' s; the sum of g^2.
  float Start(const matrix& x) {
    for (DifferenceTerm* term : terms_) term->Clear();
    scratch_.residual.copydata(y_);
    int32_t reduced = 0;
    for (int32_t r = 0; r < x.n; ++r) ReduceReadyRows(x, r, reduced);
    return Backward(nullptr, x, 1);
  }

  // p = beta p + g, q0 = R p; the sum of the squares of q0 and of every D p.
  float Forward(matrix& p, float beta) {
    SquareSum sum;
    int32_t reduced = 0;
    for (int32_t r = 0; r < p.n; ++r) {
      kernels_.scaleAndAdd(p.z[r], beta, scratch_.gradient.z[r], p.m);
      ReduceReadyRows(p, r, reduced);
      if (r > 0) AddSquares(sum, p, r - 1);
    }
    AddSquares(sum, p, p.n - 1);
    kernels_.addSquares(sum.parts, scratch_.reducedDirection.x, scratch_.reducedDirection.mn);
    return sum.Total();
  }

  // x += alpha p (x may be missing), r0 -= alpha q0, s -= alpha D p, g = R' r0 + D' s; the sum of g^2.
  float Backward(matrix* x, const matrix& p, float alpha) {
    SquareSum sum;
    kernels_.addScaled(scratch_.residual.x, -alpha, scratch_.reducedDirection.x, scratch_.residual.mn);
    for (int32_t r = 0; r < p.n; ++r) {
      if (x) kernels_.addScaled(x->z[r], alpha, p.z[r], p.m);
      for (DifferenceTerm* term : terms_) term->Step(p, r, alpha);
      if (r > 0) FormGradient(sum, r - 1);
    }
    FormGradient(sum, p.n - 1);
    return sum.Total();
  }

 private:
  // The rows of q0 that need none of p beyond row r.
  void ReduceReadyRows(const matrix& p, int32_t r, int32_t& reduced) {
    for (; reduced < y_.n && pair_.LastSource(reduced) <= r; ++reduced)
      pair_.ReduceRow(p, reduced, scratch_.reducedDirection.z[reduced]);
  }

  void AddSquares(SquareSum& sum, const matrix& p, int32_t r) const {
    for (const DifferenceTerm* term : terms_) term->AddSquares(sum.parts, p, r);
  }

  void FormGradient(SquareSum& sum, int32_t r) {
    float* g = scratch_.gradient.z[r];
    pair_.AdjointRow(scratch_.residual, r, g);
    for (const DifferenceTerm* term : terms_) term->AddAdjoint(g, r);
    kernels_.addSquares(sum.parts, g, scratch_.gradient.m);
  }

  const matrix& y_;
  FilterPair& pair_;
  std::span<DifferenceTerm* const> terms_;
  SolverScratch& scratch_;
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

SolverScratch::SolverScratch(const FilterPair& pair)
    : direction(pair.Factor() * pair.SmallWidth(), pair.Factor() * pair.SmallHeight()),
      gradient(direction.m, direction.n),
      residual(pair.SmallWidth(), pair.SmallHeight()),
      reducedDirection(residual.m, residual.n) {}

bool StepTowardsMinimum(matrix& x, const matrix& y, FilterPair& pair, std::span<DifferenceTerm* const> terms,
                        int32_t steps, SolverScratch& scratch, Progress* progress) {
  if (steps <= 0) return true;
  StepCount count(progress, steps);
  Solver solver(y, pair, terms, scratch);
  matrix& p = scratch.direction;
  float rho = solver.Start(x), beta = 0;
  p.fill(0);
  for (int32_t step = 0; step < steps; ++step) {
    const float denominator = solver.Forward(p, beta);
    if (denominator <= 0) break;
    const float alpha = rho / denominator;
    // Nothing but x is needed of the last step.
    if (step == steps - 1 || std::isnan(alpha)) {
      ActiveRestoreKernels().addScaled(x.x, alpha, p.x, x.mn);
      return !std::isnan(alpha);
    }
    const float next = solver.Backward(&x, p, alpha);
    if (rho <= 0) break;
    beta = next / rho;
    rho = next;
    count.Take();
  }
  return true;
}

}  // namespace norv
