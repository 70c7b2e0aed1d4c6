// Row kernels of the restoration, one table for each vector level, and each kernel's contract.
//
// A kernel works on one row that stays in the first-level cache; who calls it keeps the planes' sweeps together. Any
// lengths and alignments, 0 included; arithmetic in single precision in the order written. Sums of squares go to eight
// doubles, element i of a call to sums[i mod 8]: our own rule, by which all levels give the same bits.
#pragma once

#include <cstdint>

namespace norv {

enum class VectorLevel;

// The 2 x 2 cells of one row of a plane x, their corners at (r, c), (r, c'), (r', c), (r', c'). Differences:
//   d1 = x(r', c') - x(r, c)    d2 = x(r', c) - x(r, c')
struct CellRow {
  const float* upper;  // x(r, c)
  const float* lower;  // x(r', c)
  int64_t next;        // c' - c
};

// The unit vectors of a row of pixels.
struct DirectionRow {
  const float* u1;
  const float* u2;
};

// What the adjoint of a difference operator adds to a cell's corners: +first to (r', c'), -first to (r, c), +second to
// (r, c'), -second to (r', c).
struct CornerRow {
  float* first;
  float* second;
};

struct RestoreKernels {
  VectorLevel level;

  // y = s y + x;  y += s x;  y += (a - b) + (c - d)
  void (*scaleAndAdd)(float* y, float s, const float* x, int64_t n);
  void (*addScaled)(float* y, float s, const float* x, int64_t n);
  void (*addDifferences)(float* y, const float* a, const float* b, const float* c, const float* d, int64_t n);
  // Sums of x^2, and of (w (a - b))^2.
  void (*addSquares)(double* sums, const float* x, int64_t n);
  void (*addDifferenceSquares)(double* sums, const float* a, const float* b, const float* w, int64_t n);

  // Weighted differences q of the cells of p: sums of their squares (those of one cell are added first), and the step
  // s -= alpha q, which leaves for the adjoint what each cell adds to its corners.
  //   isotropic    w d1, -w d2
  //   cross        w (d1 u2 - d2 u1)
  //   scaled cross d1 u2 - d2 u1
  //   directional  the cross one with (w, s), and v (d1 u1 + d2 u2) with (v, t)
  void (*isotropicSquares)(double* sums, CellRow p, const float* w, int64_t n);
  void (*isotropicStep)(CellRow p, const float* w, float alpha, float* s1, float* s2, CornerRow out, int64_t n);
  void (*crossSquares)(double* sums, CellRow p, DirectionRow u, const float* w, int64_t n);
  void (*crossStep)(CellRow p, DirectionRow u, const float* w, float alpha, float* s, CornerRow out, int64_t n);
  void (*scaledCrossSquares)(double* sums, CellRow p, DirectionRow u, int64_t n);
  void (*scaledCrossStep)(CellRow p, DirectionRow u, float alpha, float* s, CornerRow out, int64_t n);
  void (*directionalSquares)(double* sums, CellRow p, DirectionRow u, const float* w, const float* v, int64_t n);
  void (*directionalStep)(CellRow p, DirectionRow u, const float* w, const float* v, float alpha, float* s, float* t,
                          CornerRow out, int64_t n);
  // s -= alpha w (a - b); out = w s
  void (*differenceStep)(const float* a, const float* b, const float* w, float alpha, float* s, float* out, int64_t n);

  // What weights are made of: d1^2 + d2^2, d1 u2 - d2 u1, d1 u1 + d2 u2, a - b.
  void (*measureIsotropic)(float* out, CellRow x, int64_t n);
  void (*measureCross)(float* out, CellRow x, DirectionRow u, int64_t n);
  void (*measureDot)(float* out, CellRow x, DirectionRow u, int64_t n);
  void (*measureDifference)(float* out, const float* a, const float* b, int64_t n);
  void (*squareRoot)(float* x, int64_t n);
  // With g = |x|: lambda when g <= delta, else lambda sqrt((2 g - delta) delta) / g.
  void (*huber)(float* x, float lambda, float delta, int64_t n);
  // lambda sqrt(ln(1 + g^2 / sigma^2) / g^2) when g^2 > 1e-10, else lambda / sigma, in double precision; x holds g^2 if
  // squared, else g.
  void (*lorentzian)(float* x, double lambda, double sigma, bool squared, int64_t n);
  // With g = |x| and t = g / delta: lambda when g <= delta, else lambda sqrt(1 + (2 / shape) (t^shape - 1)) / t; the
  // limit 1 + 2 ln t under the root for a shape of 0 or less. t^shape beyond e^87 counts as that.
  void (*shaped)(float* x, float lambda, float delta, float shape, int64_t n);

  // j11 = d1^2, j12 = d1 d2, j22 = d2^2
  void (*tensor)(float* j11, float* j12, float* j22, CellRow x, int64_t n);
  // The unit vector at the angle atan2(2 j12, j11 - j22) / 2, by the half-angle formulas; zero where |j12| and |j11 -
  // j22| are both below 1e-8.
  void (*direction)(float* u1, float* u2, const float* j11, const float* j12, const float* j22, int64_t n);
};

// The table of a level at or below the machine's, and that of the level in use.
const RestoreKernels& RestoreKernelsOf(VectorLevel level);
const RestoreKernels& ActiveRestoreKernels();

}  // namespace norv
