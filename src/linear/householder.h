// Orthogonal reduction by Householder reflections (Golub and Van Loan, Matrix Computations, 5.1, 5.2 and 5.4).
#pragma once

#include <cstdint>
#include <vector>

#include "linear/columns.h"

namespace norv {

// The reflection x - v (scale <v, x>).
struct Reflection {
  double scale;
  double result;  // what it makes of the leading element of the vector that it was made for; the others become 0
};

// For the elements begin .. end - 1 of x; v, zero outside them, is written. scale is 0 when they are all 0.
Reflection MakeReflector(const double* x, double* v, int32_t begin, int32_t end);

// Where the block of a row begins: from there on the kernels work on the elements behind it.
constexpr int32_t BlockOf(int32_t row) { return row / kColumnBlock * kColumnBlock; }

// A P = Q R with the columns taken in order of falling remaining norm (Businger and Golub 1965). R has Rank() rows;
// what remains below them is at most max(rows, columns) roundings of the largest column and is dropped.
class QrReduction {
 public:
  // a: `rows` rows, any number of columns; overwritten by R, its columns exchanged.
  QrReduction(Columns& a, int32_t rows);

  int32_t Rank() const { return rank_; }
  // Which column of the matrix column j of R was.
  int32_t Source(int32_t j) const { return source_[j]; }

  // Columns begin .. end - 1 of x become Q times them.
  void ApplyQ(Columns& x, int32_t begin, int32_t end) const;

 private:
  void Pivot(Columns& a, int32_t k);
  bool Eliminate(Columns& a, int32_t k, double smallest);

  int32_t rows_;
  int32_t rank_ = 0;
  Columns reflectors_;           // column k: zeros above row k
  std::vector<double> scale_;    // of each reflection
  std::vector<int32_t> source_;  // of each column
  std::vector<double> norm_;     // squares of what remains of each column ...
  std::vector<double> sure_;     // ... and when it was last summed afresh
};

}  // namespace norv
