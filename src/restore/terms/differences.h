// The weighted difference operators of the update steps, row by row, each with its residual and its adjoint.
//
// A term owns its weights and its residual s. Two sweeps over the rows of a plane p make a step: one sums the squares
// of q = D p, the other forms q again, takes alpha q from s and gathers g += D' s. q is never stored.
//
// d1 and d2 are the differences along the diagonals of the 2 x 2 cell of pixels at (r, c): x(r+1, c+1) - x(r, c) and
// x(r+1, c) - x(r, c+1). At the last row and column a mirrored cell has the pixels before them as its far ones.
#pragma once

#include <cstdint>
#include <vector>

#include "linear/matrix2.h"
#include "platform/memory.h"
#include "restore/terms/orientation_field.h"
#include "restore/terms/weights.h"
#include "simd/restore/kernels.h"

namespace norv {

// Differences are kept for so many rows, which is what the adjoint of one row gathers from, with zeros on both sides.
inline constexpr int64_t kRowsKept = 3, kRowPadding = 8;

// Planes are w x h, w and h >= 1, of one size for the life of a term. Each class says in kPlanes how many planes of
// that size an object holds: its weights and residuals, and whatever else grows with the plane.
class DifferenceTerm {
 public:
  virtual ~DifferenceTerm() = default;

  // The weights of the plane as it stands; dimensions the residual.
  virtual void Weigh(const matrix& x) = 0;
  // s = 0
  virtual void Clear() = 0;
  // sums[0..7] += the squares of row r of D p; reads the rows r and r + 1 (mirrored).
  virtual void AddSquares(double* sums, const matrix& p, int32_t r) const = 0;
  // Row r of s -= alpha D p. Rows in order from 0 on.
  virtual void Step(const matrix& p, int32_t r, float alpha) = 0;
  // g += row r of D' s. Rows in order, each after Step of row r + 1 (of r, when that is the last).
  virtual void AddAdjoint(float* g, int32_t r) const = 0;
};

// What all operators on 2 x 2 cells share: the adjoint. Every cell adds something to its four corners; what the cells
// of a row add is kept until the rows of pixels above and below have gathered it.
class CellTerm : public DifferenceTerm {
 public:
  CellTerm(int32_t w, int32_t h);
  void AddAdjoint(float* g, int32_t r) const override;

 protected:
  // Of row r, one of the latest three; zeros before the first and behind the last row.
  CornerRow Corners(int64_t r) const;
  int32_t w_, h_;

 private:
  int64_t stride_;
  AlignedArray<float> corners_;
};

// w d1 and -w d2 of the (w-1) x (h-1) cells inside.
class IsotropicTerm : public CellTerm {
 public:
  IsotropicTerm(int32_t w, int32_t h, const Weighting& weighting) : CellTerm(w, h), weighting_(weighting) {}
  static constexpr int32_t kPlanes = 3;
  void Weigh(const matrix& x) override;
  void Clear() override;
  void AddSquares(double* sums, const matrix& p, int32_t r) const override;
  void Step(const matrix& p, int32_t r, float alpha) override;

 private:
  Weighting weighting_;
  matrix weights_, s1_, s2_;
};

// The same with weights taken once from a reference plane, whatever plane is asked about.
class ReferenceTerm : public IsotropicTerm {
 public:
  ReferenceTerm(const matrix& reference, const Weighting& weighting);
  void Weigh(const matrix&) override {}
};

// w (d1 u2 - d2 u1) of all cells, mirrored at the far borders.
class CrossTerm : public CellTerm {
 public:
  CrossTerm(int32_t w, int32_t h, const Weighting& weighting, const OrientationField& field)
      : CellTerm(w, h), weighting_(weighting), field_(field) {}
  static constexpr int32_t kPlanes = 2;
  void Weigh(const matrix& x) override;
  void Clear() override { s_.fill(0); }
  void AddSquares(double* sums, const matrix& p, int32_t r) const override;
  void Step(const matrix& p, int32_t r, float alpha) override;

 private:
  Weighting weighting_;
  const OrientationField& field_;
  matrix weights_, s_;
};

// d1 v2 - d2 v1 of all cells with v = w u. Weighing multiplies the field's vectors u by w in place, which saves two
// planes: the field belongs to this term alone and has to be found anew before it is weighed again (FieldUse::scales).
class ScaledCrossTerm : public CellTerm {
 public:
  ScaledCrossTerm(int32_t w, int32_t h, const Weighting& weighting, OrientationField& field)
      : CellTerm(w, h), weighting_(weighting), field_(field) {}
  static constexpr int32_t kPlanes = 1;
  void Weigh(const matrix& x) override;
  void Clear() override { s_.fill(0); }
  void AddSquares(double* sums, const matrix& p, int32_t r) const override;
  void Step(const matrix& p, int32_t r, float alpha) override;

 private:
  Weighting weighting_;
  OrientationField& field_;
  matrix s_;
};

// Cross and dot differences of all cells in one sweep, each with weights of its own.
class DirectionalTerm : public CellTerm {
 public:
  DirectionalTerm(int32_t w, int32_t h, const Weighting& cross, const Weighting& dot, const OrientationField& field)
      : CellTerm(w, h), cross_(cross), dot_(dot), field_(field) {}
  static constexpr int32_t kPlanes = 4;
  void Weigh(const matrix& x) override;
  void Clear() override;
  void AddSquares(double* sums, const matrix& p, int32_t r) const override;
  void Step(const matrix& p, int32_t r, float alpha) override;

 private:
  Weighting cross_, dot_;
  const OrientationField& field_;
  matrix crossWeights_, dotWeights_, s_, t_;
};

// The cross differences at listed pixels only.
class MaskedTerm : public CellTerm {
 public:
  MaskedTerm(int32_t w, int32_t h, const Weighting& weighting, const OrientationField& field, const PixelList& pixels)
      : CellTerm(w, h), weighting_(weighting), field_(field), pixels_(pixels) {}
  static constexpr int32_t kPlanes = 3;  // the list of pixels is one of them, if every pixel is an edge
  void Weigh(const matrix& x) override { WeighListed(weights_, x, field_, pixels_, weighting_); }
  void Clear() override { s_.assign(weights_.size(), 0.0f); }
  void AddSquares(double* sums, const matrix& p, int32_t r) const override;
  void Step(const matrix& p, int32_t r, float alpha) override;

 private:
  float Difference(const matrix& p, int32_t r, int64_t k) const;

  Weighting weighting_;
  const OrientationField& field_;
  const PixelList& pixels_;
  std::vector<float> weights_, s_;
};

// w (x(r, c+1) - x(r, c)) and w (x(r+1, c) - x(r, c)), each with weights of its own.
class AxisTerm : public DifferenceTerm {
 public:
  AxisTerm(int32_t w, int32_t h, const Weighting& weighting);
  static constexpr int32_t kPlanes = 4;
  void Weigh(const matrix& x) override;
  void Clear() override;
  void AddSquares(double* sums, const matrix& p, int32_t r) const override;
  void Step(const matrix& p, int32_t r, float alpha) override;
  void AddAdjoint(float* g, int32_t r) const override;

 private:
  // Weighted residuals of one of the latest three rows, with a zero at both ends.
  float* Across(int64_t r) const { return rows_.get() + r % kRowsKept * 2 * stride_ + kRowPadding; }
  float* Down(int64_t r) const { return Across(r) + stride_; }

  int32_t w_, h_;
  int64_t stride_;
  Weighting weighting_;
  matrix across_, down_, s_, t_;
  AlignedArray<float> rows_;
  AlignedArray<float> zeros_;
};

}  // namespace norv
