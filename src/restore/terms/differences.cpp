#include "restore/terms/differences.h"

#include <algorithm>

#include "raster/edges.h"

namespace norv {
namespace {

CornerRow operator+(CornerRow row, int64_t c) { return {row.first + c, row.second + c}; }

}  // namespace

// -------------------------------------------------------------------------------------------------- cells

// Behind the pairs of rows that are kept stands one of zeros.
CellTerm::CellTerm(int32_t w, int32_t h)
    : w_(w), h_(h), stride_(w + 2 * kRowPadding), corners_(Zeros<float>(2 * (kRowsKept + 1) * stride_)) {}

CornerRow CellTerm::Corners(int64_t r) const {
  float* first = corners_.get() + (r < 0 || r >= h_ ? kRowsKept : r % kRowsKept) * 2 * stride_ + kRowPadding;
  return {first, first + stride_};
}

void CellTerm::AddAdjoint(float* g, int32_t r) const {
  const RestoreKernels& kernels = ActiveRestoreKernels();
  const CornerRow above = Corners(int64_t{r} - 1), here = Corners(r), zeros = Corners(-1);
  kernels.addDifferences(g, above.first - 1, here.first, here.second - 1, above.second, w_);
  // The cells of the last column and of the last row have their far corners mirrored back.
  const int64_t last = w_ - 1, mirrored = MirrorIndex(int64_t{w_}, w_);
  g[mirrored] += above.first[last] + here.second[last];
  if (r != MirrorIndex(int64_t{h_}, h_)) return;
  const CornerRow far = Corners(h_ - 1);
  kernels.addDifferences(g, far.first - 1, far.second, zeros.first, zeros.second, w_);
  g[mirrored] += far.first[last];
}

// ---------------------------------------------------------------------------------------------- isotropic

void IsotropicTerm::Weigh(const matrix& x) {
  WeighIsotropic(weights_, x, weighting_);
  s1_.dim(weights_.m, weights_.n);
  s2_.dim(weights_.m, weights_.n);
}

ReferenceTerm::ReferenceTerm(const matrix& reference, const Weighting& weighting)
    : IsotropicTerm(reference.m, reference.n, weighting) {
  IsotropicTerm::Weigh(reference);
}

void IsotropicTerm::Clear() {
  s1_.fill(0);
  s2_.fill(0);
}

void IsotropicTerm::AddSquares(double* sums, const matrix& p, int32_t r) const {
  if (weights_.mn == 0 || r >= weights_.n) return;
  ActiveRestoreKernels().isotropicSquares(sums, {p.z[r], p.z[r + 1], 1}, weights_.z[r], weights_.m);
}

void IsotropicTerm::Step(const matrix& p, int32_t r, float alpha) {
  const CornerRow out = Corners(r);
  if (weights_.mn == 0 || r >= weights_.n) {
    std::fill_n(out.first, w_, 0.0f);
    std::fill_n(out.second, w_, 0.0f);
    return;
  }
  ActiveRestoreKernels().isotropicStep({p.z[r], p.z[r + 1], 1}, weights_.z[r], alpha, s1_.z[r], s2_.z[r], out,
                                       weights_.m);
}

// ------------------------------------------------------------------------------------------- cross and dot

void CrossTerm::Weigh(const matrix& x) {
  WeighCross(weights_, x, field_, weighting_);
  s_.dim(x.m, x.n);
}

void CrossTerm::AddSquares(double* sums, const matrix& p, int32_t r) const {
  ForCells(p, r, [&](CellRow cells, int64_t c, int64_t n) {
    ActiveRestoreKernels().crossSquares(sums, cells, field_.Row(r, c), weights_.z[r] + c, n);
  });
}

void CrossTerm::Step(const matrix& p, int32_t r, float alpha) {
  ForCells(p, r, [&](CellRow cells, int64_t c, int64_t n) {
    ActiveRestoreKernels().crossStep(cells, field_.Row(r, c), weights_.z[r] + c, alpha, s_.z[r] + c, Corners(r) + c, n);
  });
}

void ScaledCrossTerm::Weigh(const matrix& x) {
  // The residual's plane serves as the weights' until the vectors have taken them in.
  WeighCross(s_, x, field_, weighting_);
  for (int64_t i = 0; i < s_.mn; ++i) {
    field_.u1.x[i] *= s_.x[i];
    field_.u2.x[i] *= s_.x[i];
  }
}

void ScaledCrossTerm::AddSquares(double* sums, const matrix& p, int32_t r) const {
  ForCells(p, r, [&](CellRow cells, int64_t c, int64_t n) {
    ActiveRestoreKernels().scaledCrossSquares(sums, cells, field_.Row(r, c), n);
  });
}

void ScaledCrossTerm::Step(const matrix& p, int32_t r, float alpha) {
  ForCells(p, r, [&](CellRow cells, int64_t c, int64_t n) {
    ActiveRestoreKernels().scaledCrossStep(cells, field_.Row(r, c), alpha, s_.z[r] + c, Corners(r) + c, n);
  });
}

void DirectionalTerm::Weigh(const matrix& x) {
  WeighCross(crossWeights_, x, field_, cross_);
  WeighDot(dotWeights_, x, field_, dot_);
  s_.dim(x.m, x.n);
  t_.dim(x.m, x.n);
}

void DirectionalTerm::Clear() {
  s_.fill(0);
  t_.fill(0);
}

void DirectionalTerm::AddSquares(double* sums, const matrix& p, int32_t r) const {
  ForCells(p, r, [&](CellRow cells, int64_t c, int64_t n) {
    ActiveRestoreKernels().directionalSquares(sums, cells, field_.Row(r, c), crossWeights_.z[r] + c,
                                              dotWeights_.z[r] + c, n);
  });
}

void DirectionalTerm::Step(const matrix& p, int32_t r, float alpha) {
  ForCells(p, r, [&](CellRow cells, int64_t c, int64_t n) {
    ActiveRestoreKernels().directionalStep(cells, field_.Row(r, c), crossWeights_.z[r] + c, dotWeights_.z[r] + c, alpha,
                                           s_.z[r] + c, t_.z[r] + c, Corners(r) + c, n);
  });
}

// ------------------------------------------------------------------------------------------- listed pixels

float MaskedTerm::Difference(const matrix& p, int32_t r, int64_t k) const {
  const int32_t c = pixels_.column[k];
  const auto [d1, d2] = CellAt(p, r, c);
  return weights_[k] * (d1 * field_.u2.z[r][c] - d2 * field_.u1.z[r][c]);
}

void MaskedTerm::AddSquares(double* sums, const matrix& p, int32_t r) const {
  for (int64_t k = pixels_.begin[r]; k < pixels_.begin[r + 1]; ++k) {
    const float q = Difference(p, r, k);
    sums[0] += static_cast<double>(q * q);
  }
}

void MaskedTerm::Step(const matrix& p, int32_t r, float alpha) {
  const CornerRow out = Corners(r);
  std::fill_n(out.first, w_, 0.0f);
  std::fill_n(out.second, w_, 0.0f);
  for (int64_t k = pixels_.begin[r]; k < pixels_.begin[r + 1]; ++k) {
    s_[k] -= alpha * Difference(p, r, k);
    const int32_t c = pixels_.column[k];
    const float a = weights_[k] * s_[k];
    out.first[c] = a * field_.u2.z[r][c];
    out.second[c] = a * field_.u1.z[r][c];
  }
}

// -------------------------------------------------------------------------------------------------- axes

AxisTerm::AxisTerm(int32_t w, int32_t h, const Weighting& weighting)
    : w_(w),
      h_(h),
      stride_(w + 2 * kRowPadding),
      weighting_(weighting),
      rows_(Zeros<float>(2 * kRowsKept * stride_)),
      zeros_(Zeros<float>(w)) {}

void AxisTerm::Weigh(const matrix& x) {
  WeighAxes(across_, down_, x, weighting_);
  s_.dim(across_.m, across_.n);
  t_.dim(down_.m, down_.n);
}

void AxisTerm::Clear() {
  s_.fill(0);
  t_.fill(0);
}

void AxisTerm::AddSquares(double* sums, const matrix& p, int32_t r) const {
  const RestoreKernels& kernels = ActiveRestoreKernels();
  if (w_ > 1) kernels.addDifferenceSquares(sums, p.z[r] + 1, p.z[r], across_.z[r], w_ - 1);
  if (r + 1 < h_) kernels.addDifferenceSquares(sums, p.z[r + 1], p.z[r], down_.z[r], w_);
}

void AxisTerm::Step(const matrix& p, int32_t r, float alpha) {
  const RestoreKernels& kernels = ActiveRestoreKernels();
  if (w_ > 1) kernels.differenceStep(p.z[r] + 1, p.z[r], across_.z[r], alpha, s_.z[r], Across(r), w_ - 1);
  if (r + 1 < h_) kernels.differenceStep(p.z[r + 1], p.z[r], down_.z[r], alpha, t_.z[r], Down(r), w_);
}

void AxisTerm::AddAdjoint(float* g, int32_t r) const {
  const float* above = r > 0 ? Down(r - 1) : zeros_.get();
  const float* below = r + 1 < h_ ? Down(r) : zeros_.get();
  ActiveRestoreKernels().addDifferences(g, Across(r) - 1, Across(r), above, below, w_);
}

}  // namespace norv
