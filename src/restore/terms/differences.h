// The weighted difference operators of the update steps, row by row, each with its residual and its adjoint.
//
// A term owns its weights and its residual s. Two sweeps over the rows of a plane p make a step: one sums the squares
// of q = D p, the other forms q again, takes alpha q from s and gathers g += D' s. q is never stored.
//
// d1 and d2 are the differences along the diagonals of the 2 x 2 cell of pixels at (r, c): x(r+1, c+1) - x(r, c) and
// x(r+1, c) - x(r, c+1). At the last row and column a mirrored cell has the pixels before them as its far ones.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

#include "linear/matrix2.h"
#include "platform/memory.h"
#include "restore/blocks/plane_rows.h"
#include "restore/blocks/row_runs.h"
#include "restore/terms/orientation_field.h"
#include "restore/terms/weights.h"
#include "simd/restore/kernels.h"

namespace norv {

// Differences are kept for so many rows, which is what the adjoint of one row gathers from, with zeros on both sides.
inline constexpr int64_t kRowsKept = 3, kRowPadding = 8;

// Planes are w x h, w and h >= 1, of one size for the life of a term, and so are the runs that their rows are cut into.
// Each class says in kPlanes how many planes of that size an object holds: its weights and residuals, and whatever else
// grows with the plane. What has a run for an argument may be called for several runs at once, the others may not.
class DifferenceTerm {
 public:
  virtual ~DifferenceTerm() = default;

  // The weights of the plane as it stands, for the cut's part; dimensions the residual.
  virtual void Weigh(const matrix& x, StandingTeam& team) = 0;
  // s = 0 as far as the run works on it.
  virtual void Clear(int32_t run) = 0;
  // sums[0..7] += the squares of row r of D p; reads the rows r and r + 1 (mirrored).
  virtual void AddSquares(double* sums, const PlaneRows& p, int32_t r) const = 0;
  // Row r of s -= alpha D p. Rows in order from the one above the run's first on, where there is one.
  virtual void Step(const PlaneRows& p, int32_t r, float alpha, int32_t run) = 0;
  // g += row r of D' s, a row of the run. Rows in order, each after Step of row r + 1 (of r, when that is the last).
  virtual void AddAdjoint(float* g, int32_t r, int32_t run) const = 0;
};

// What every run of rows keeps of a term: what the differences of its latest rows add to the gradient, in pairs of
// rows, and its own copy of the residuals of the row above its first one, which its neighbour steps as well.
class RunRows {
 public:
  RunRows(int32_t w, const RowRuns& cut);

  // Of row r, one of the latest three; zeros before the first and behind the last row of the plane.
  CornerRow Pair(int32_t run, int64_t r) const;
  // Row r of the residuals s, the term's first (0) or second (1) plane of them, as the run steps it.
  float* Residual(int32_t run, int64_t r, const matrix& s, int32_t which) const {
    return IsAbove(run, r) ? Copy(run, which) : s.z[r];
  }
  float* Copy(int32_t run, int32_t which) const { return Lines(run) + (2 * (kRowsKept + 1) + which) * stride_; }
  // Zeros in the rows of the planes that are the run's, and in its copies.
  void Clear(int32_t run, std::initializer_list<const matrix*> planes) const;

  Range RowsOf(int32_t run) const { return rows_[static_cast<size_t>(run)]; }
  Range Weighed() const { return weighed_; }
  bool IsAbove(int32_t run, int64_t r) const { return r < RowsOf(run).begin; }

 private:
  float* Lines(int32_t run) const { return lines_.get() + run * kLines * stride_ + kRowPadding; }

  // Behind the pairs of rows that are kept stands one of zeros, then the copies.
  static constexpr int64_t kLines = 2 * (kRowsKept + 1) + 2;
  std::vector<Range> rows_;  // of every run
  Range weighed_;            // of all of them
  int64_t height_, width_, stride_;
  AlignedArray<float> lines_;
};

// What all operators on 2 x 2 cells share: the adjoint. Every cell adds something to its four corners; what the cells
// of a row add is kept until the rows of pixels above and below have gathered it.
class CellTerm : public DifferenceTerm {
 public:
  CellTerm(int32_t w, const RowRuns& cut) : w_(w), h_(cut.Height()), rows_(w, cut) {}
  void AddAdjoint(float* g, int32_t r, int32_t run) const override;

 protected:
  int32_t w_, h_;
  RunRows rows_;
};

// w d1 and -w d2 of the (w-1) x (h-1) cells inside.
class IsotropicTerm : public CellTerm {
 public:
  IsotropicTerm(int32_t w, const RowRuns& cut, const Weighting& weighting) : CellTerm(w, cut), weighting_(weighting) {}
  static constexpr int32_t kPlanes = 3;
  void Weigh(const matrix& x, StandingTeam& team) override;
  void Clear(int32_t run) override;
  void AddSquares(double* sums, const PlaneRows& p, int32_t r) const override;
  void Step(const PlaneRows& p, int32_t r, float alpha, int32_t run) override;

 private:
  Weighting weighting_;
  matrix weights_, s1_, s2_;
};

// The same with weights taken once from a reference plane, whatever plane is asked about.
class ReferenceTerm : public IsotropicTerm {
 public:
  ReferenceTerm(const matrix& reference, const RowRuns& cut, const Weighting& weighting, StandingTeam& team);
  void Weigh(const matrix&, StandingTeam&) override {}
};

// w (d1 u2 - d2 u1) of all cells, mirrored at the far borders.
class CrossTerm : public CellTerm {
 public:
  CrossTerm(int32_t w, const RowRuns& cut, const Weighting& weighting, const OrientationField& field)
      : CellTerm(w, cut), weighting_(weighting), field_(field) {}
  static constexpr int32_t kPlanes = 2;
  void Weigh(const matrix& x, StandingTeam& team) override;
  void Clear(int32_t run) override { rows_.Clear(run, {&s_}); }
  void AddSquares(double* sums, const PlaneRows& p, int32_t r) const override;
  void Step(const PlaneRows& p, int32_t r, float alpha, int32_t run) override;

 private:
  Weighting weighting_;
  const OrientationField& field_;
  matrix weights_, s_;
};

// d1 v2 - d2 v1 of all cells with v = w u. Weighing multiplies the field's vectors u by w in place, which saves two
// planes: the field belongs to this term alone and has to be found anew before it is weighed again (FieldUse::scales).
class ScaledCrossTerm : public CellTerm {
 public:
  ScaledCrossTerm(int32_t w, const RowRuns& cut, const Weighting& weighting, OrientationField& field)
      : CellTerm(w, cut), weighting_(weighting), field_(field) {}
  static constexpr int32_t kPlanes = 1;
  void Weigh(const matrix& x, StandingTeam& team) override;
  void Clear(int32_t run) override { rows_.Clear(run, {&s_}); }
  void AddSquares(double* sums, const PlaneRows& p, int32_t r) const override;
  void Step(const PlaneRows& p, int32_t r, float alpha, int32_t run) override;

 private:
  Weighting weighting_;
  OrientationField& field_;
  matrix s_;
};

// Cross and dot differences of all cells in one sweep, each with weights of its own.
class DirectionalTerm : public CellTerm {
 public:
  DirectionalTerm(int32_t w, const RowRuns& cut, const Weighting& cross, const Weighting& dot,
                  const OrientationField& field)
      : CellTerm(w, cut), cross_(cross), dot_(dot), field_(field) {}
  static constexpr int32_t kPlanes = 4;
  void Weigh(const matrix& x, StandingTeam& team) override;
  void Clear(int32_t run) override;
  void AddSquares(double* sums, const PlaneRows& p, int32_t r) const override;
  void Step(const PlaneRows& p, int32_t r, float alpha, int32_t run) override;

 private:
  Weighting cross_, dot_;
  const OrientationField& field_;
  matrix crossWeights_, dotWeights_, s_, t_;
};

// The cross differences at listed pixels only.
class MaskedTerm : public CellTerm {
 public:
  MaskedTerm(int32_t w, const RowRuns& cut, const Weighting& weighting, const OrientationField& field,
             const PixelList& pixels)
      : CellTerm(w, cut), weighting_(weighting), field_(field), pixels_(pixels) {}
  static constexpr int32_t kPlanes = 3;  // the list of pixels is one of them, if every pixel is an edge
  void Weigh(const matrix& x, StandingTeam& team) override;
  void Clear(int32_t run) override;
  void AddSquares(double* sums, const PlaneRows& p, int32_t r) const override;
  void Step(const PlaneRows& p, int32_t r, float alpha, int32_t run) override;

 private:
  float Difference(const PlaneRows& p, int32_t r, int64_t k) const;
  float* Residuals(int32_t run, int32_t r);

  Weighting weighting_;
  const OrientationField& field_;
  const PixelList& pixels_;
  std::vector<float> weights_, s_;
};

// w (x(r, c+1) - x(r, c)) and w (x(r+1, c) - x(r, c)), each with weights of its own.
class AxisTerm : public DifferenceTerm {
 public:
  AxisTerm(int32_t w, const RowRuns& cut, const Weighting& weighting);
  static constexpr int32_t kPlanes = 4;
  void Weigh(const matrix& x, StandingTeam& team) override;
  void Clear(int32_t run) override;
  void AddSquares(double* sums, const PlaneRows& p, int32_t r) const override;
  void Step(const PlaneRows& p, int32_t r, float alpha, int32_t run) override;
  void AddAdjoint(float* g, int32_t r, int32_t run) const override;

 private:
  // Weighted residuals of one of the latest three rows, with a zero at both ends.
  float* Across(int32_t run, int64_t r) const { return rows_.Pair(run, r).first; }
  float* Down(int32_t run, int64_t r) const { return rows_.Pair(run, r).second; }

  int32_t w_, h_;
  RunRows rows_;
  Weighting weighting_;
  matrix across_, down_, s_, t_;
};

}  // namespace norv
