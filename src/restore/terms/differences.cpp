#include "restore/terms/differences.h"

#include <algorithm>

#include "raster/edges.h"

namespace norv {
namespace {

CornerRow operator+(CornerRow row, int64_t c) { return {row.first + c, row.second + c}; }

}  // namespace

RunRows::RunRows(int32_t w, const RowRuns& cut)
    : weighed_(cut.WeighedRows()),
      height_(cut.Height()),
      width_(w),
      stride_(w + 2 * kRowPadding),
      lines_(Zeros<float>(cut.Runs() * kLines * stride_)) {
  for (int32_t run = 0; run < cut.Runs(); ++run) rows_.push_back(cut.Rows(cut.BlocksOf(run)));
}

CornerRow RunRows::Pair(int32_t run, int64_t r) const {
  float* first = Lines(run) + (r < 0 || r >= height_ ? kRowsKept : r % kRowsKept) * 2 * stride_;
  return {first, first + stride_};
}

void RunRows::Clear(int32_t run, std::initializer_list<const matrix*> planes) const {
  const Range rows = RowsOf(run);
  for (const matrix* s : planes)
    for (int64_t r = rows.begin; r < std::min<int64_t>(rows.end, s->n); ++r) std::fill_n(s->z[r], s->m, 0.0f);
  for (int32_t which = 0; which < 2; ++which) std::fill_n(Copy(run, which), width_, 0.0f);
}

// -------------------------------------------------------------------------------------------------- cells

void CellTerm::AddAdjoint(float* g, int32_t r, int32_t run) const {
  const RestoreKernels& kernels = ActiveRestoreKernels();
  const CornerRow above = rows_.Pair(run, int64_t{r} - 1), here = rows_.Pair(run, r), zeros = rows_.Pair(run, -1);
  kernels.addDifferences(g, above.first - 1, here.first, here.second - 1, above.second, w_);
  // The cells of the last column and of the last row have their far corners mirrored back.
  const int64_t last = w_ - 1, mirrored = MirrorIndex(int64_t{w_}, w_);
  g[mirrored] += above.first[last] + here.second[last];
  if (r != MirrorIndex(int64_t{h_}, h_)) return;
  const CornerRow far = rows_.Pair(run, h_ - 1);
  kernels.addDifferences(g, far.first - 1, far.second, zeros.first, zeros.second, w_);
  g[mirrored] += far.first[last];
}

// ---------------------------------------------------------------------------------------------- isotropic

void IsotropicTerm::Weigh(const matrix& x, StandingTeam& team) {
  WeighIsotropic(weights_, x, weighting_, team, rows_.Weighed());
  s1_.dim(weights_.m, weights_.n);
  s2_.dim(weights_.m, weights_.n);
}

ReferenceTerm::ReferenceTerm(const matrix& reference, const RowRuns& cut, const Weighting& weighting,
                             StandingTeam& team)
    : IsotropicTerm(reference.m, cut, weighting) {
  IsotropicTerm::Weigh(reference, team);
}

void IsotropicTerm::Clear(int32_t run) { rows_.Clear(run, {&s1_, &s2_}); }

void IsotropicTerm::AddSquares(double* sums, const PlaneRows& p, int32_t r) const {
  if (weights_.mn == 0 || r >= weights_.n) return;
  ActiveRestoreKernels().isotropicSquares(sums, {p[r], p[r + 1], 1}, weights_.z[r], weights_.m);
}

void IsotropicTerm::Step(const PlaneRows& p, int32_t r, float alpha, int32_t run) {
  const CornerRow out = rows_.Pair(run, r);
  if (weights_.mn == 0 || r >= weights_.n) {
    std::fill_n(out.first, w_, 0.0f);
    std::fill_n(out.second, w_, 0.0f);
    return;
  }
  ActiveRestoreKernels().isotropicStep({p[r], p[r + 1], 1}, weights_.z[r], alpha, rows_.Residual(run, r, s1_, 0),
                                       rows_.Residual(run, r, s2_, 1), out, weights_.m);
}

// ------------------------------------------------------------------------------------------- cross and dot

void CrossTerm::Weigh(const matrix& x, StandingTeam& team) {
  WeighCross(weights_, x, field_, weighting_, team, rows_.Weighed());
  s_.dim(x.m, x.n);
}

void CrossTerm::AddSquares(double* sums, const PlaneRows& p, int32_t r) const {
  ForCells(p, r, [&](CellRow cells, int64_t c, int64_t n) {
    ActiveRestoreKernels().crossSquares(sums, cells, field_.Row(r, c), weights_.z[r] + c, n);
  });
}

void CrossTerm::Step(const PlaneRows& p, int32_t r, float alpha, int32_t run) {
  float* s = rows_.Residual(run, r, s_, 0);
  const CornerRow out = rows_.Pair(run, r);
  ForCells(p, r, [&](CellRow cells, int64_t c, int64_t n) {
    ActiveRestoreKernels().crossStep(cells, field_.Row(r, c), weights_.z[r] + c, alpha, s + c, out + c, n);
  });
}

void ScaledCrossTerm::Weigh(const matrix& x, StandingTeam& team) {
  // The residual's plane serves as the weights' until the vectors have taken them in.
  WeighCross(s_, x, field_, weighting_, team, rows_.Weighed());
  const int64_t first = rows_.Weighed().begin * s_.m, count = rows_.Weighed().end * s_.m - first;
  team.ForParts(count, kPixelsWorthACut, [&](int64_t begin, int64_t end) {
    for (int64_t i = first + begin; i < first + end; ++i) {
      field_.u1.x[i] *= s_.x[i];
      field_.u2.x[i] *= s_.x[i];
    }
  });
}

void ScaledCrossTerm::AddSquares(double* sums, const PlaneRows& p, int32_t r) const {
  ForCells(p, r, [&](CellRow cells, int64_t c, int64_t n) {
    ActiveRestoreKernels().scaledCrossSquares(sums, cells, field_.Row(r, c), n);
  });
}

void ScaledCrossTerm::Step(const PlaneRows& p, int32_t r, float alpha, int32_t run) {
  float* s = rows_.Residual(run, r, s_, 0);
  const CornerRow out = rows_.Pair(run, r);
  ForCells(p, r, [&](CellRow cells, int64_t c, int64_t n) {
    ActiveRestoreKernels().scaledCrossStep(cells, field_.Row(r, c), alpha, s + c, out + c, n);
  });
}

void DirectionalTerm::Weigh(const matrix& x, StandingTeam& team) {
  WeighCross(crossWeights_, x, field_, cross_, team, rows_.Weighed());
  WeighDot(dotWeights_, x, field_, dot_, team, rows_.Weighed());
  s_.dim(x.m, x.n);
  t_.dim(x.m, x.n);
}

void DirectionalTerm::Clear(int32_t run) { rows_.Clear(run, {&s_, &t_}); }

void DirectionalTerm::AddSquares(double* sums, const PlaneRows& p, int32_t r) const {
  ForCells(p, r, [&](CellRow cells, int64_t c, int64_t n) {
    ActiveRestoreKernels().directionalSquares(sums, cells, field_.Row(r, c), crossWeights_.z[r] + c,
                                              dotWeights_.z[r] + c, n);
  });
}

void DirectionalTerm::Step(const PlaneRows& p, int32_t r, float alpha, int32_t run) {
  float *s = rows_.Residual(run, r, s_, 0), *t = rows_.Residual(run, r, t_, 1);
  const CornerRow out = rows_.Pair(run, r);
  ForCells(p, r, [&](CellRow cells, int64_t c, int64_t n) {
    ActiveRestoreKernels().directionalStep(cells, field_.Row(r, c), crossWeights_.z[r] + c, dotWeights_.z[r] + c, alpha,
                                           s + c, t + c, out + c, n);
  });
}

// ------------------------------------------------------------------------------------------- listed pixels

void MaskedTerm::Weigh(const matrix& x, StandingTeam& team) {
  WeighListed(weights_, x, field_, pixels_, weighting_, team, rows_.Weighed());
  s_.resize(weights_.size());
}

// The listed residuals of a row stand one behind the other in the run's copy as they do in the whole list.
float* MaskedTerm::Residuals(int32_t run, int32_t r) {
  return rows_.IsAbove(run, r) ? rows_.Copy(run, 0) : s_.data() + pixels_.begin[r];
}

void MaskedTerm::Clear(int32_t run) {
  rows_.Clear(run, {});
  const Range rows = rows_.RowsOf(run);
  std::fill(s_.begin() + pixels_.begin[rows.begin], s_.begin() + pixels_.begin[rows.end], 0.0f);
}

float MaskedTerm::Difference(const PlaneRows& p, int32_t r, int64_t k) const {
  const int32_t c = pixels_.column[k];
  const auto [d1, d2] = CellAt(p, r, c);
  return weights_[k] * (d1 * field_.u2.z[r][c] - d2 * field_.u1.z[r][c]);
}

void MaskedTerm::AddSquares(double* sums, const PlaneRows& p, int32_t r) const {
  for (int64_t k = pixels_.begin[r]; k < pixels_.begin[r + 1]; ++k) {
    const float q = Difference(p, r, k);
    sums[0] += static_cast<double>(q * q);
  }
}

void MaskedTerm::Step(const PlaneRows& p, int32_t r, float alpha, int32_t run) {
  const CornerRow out = rows_.Pair(run, r);
  std::fill_n(out.first, w_, 0.0f);
  std::fill_n(out.second, w_, 0.0f);
  float* s = Residuals(run, r);
  for (int64_t k = pixels_.begin[r]; k < pixels_.begin[r + 1]; ++k, ++s) {
    *s -= alpha * Difference(p, r, k);
    const int32_t c = pixels_.column[k];
    const float a = weights_[k] * *s;
    out.first[c] = a * field_.u2.z[r][c];
    out.second[c] = a * field_.u1.z[r][c];
  }
}

// -------------------------------------------------------------------------------------------------- axes

AxisTerm::AxisTerm(int32_t w, const RowRuns& cut, const Weighting& weighting)
    : w_(w), h_(cut.Height()), rows_(w, cut), weighting_(weighting) {}

void AxisTerm::Weigh(const matrix& x, StandingTeam& team) {
  WeighAxes(across_, down_, x, weighting_, team, rows_.Weighed());
  s_.dim(across_.m, across_.n);
  t_.dim(down_.m, down_.n);
}

void AxisTerm::Clear(int32_t run) { rows_.Clear(run, {&s_, &t_}); }

void AxisTerm::AddSquares(double* sums, const PlaneRows& p, int32_t r) const {
  const RestoreKernels& kernels = ActiveRestoreKernels();
  if (w_ > 1) kernels.addDifferenceSquares(sums, p[r] + 1, p[r], across_.z[r], w_ - 1);
  if (r + 1 < h_) kernels.addDifferenceSquares(sums, p[r + 1], p[r], down_.z[r], w_);
}

// Of the row above a run, which is not the run's own, only the differences down to the first one matter.
void AxisTerm::Step(const PlaneRows& p, int32_t r, float alpha, int32_t run) {
  const RestoreKernels& kernels = ActiveRestoreKernels();
  if (w_ > 1 && !rows_.IsAbove(run, r))
    kernels.differenceStep(p[r] + 1, p[r], across_.z[r], alpha, s_.z[r], Across(run, r), w_ - 1);
  if (r + 1 < h_)
    kernels.differenceStep(p[r + 1], p[r], down_.z[r], alpha, rows_.Residual(run, r, t_, 1), Down(run, r), w_);
}

void AxisTerm::AddAdjoint(float* g, int32_t r, int32_t run) const {
  const float* above = Down(run, int64_t{r} - 1);
  const float* below = r + 1 < h_ ? Down(run, r) : Down(run, h_);
  ActiveRestoreKernels().addDifferences(g, Across(run, r) - 1, Across(run, r), above, below, w_);
}

}  // namespace norv
