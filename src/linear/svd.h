// The singular value decomposition behind dmatrix::svd.
#pragma once

#include <cstdint>
#include <vector>

#include "linear/columns.h"

namespace norv {

// a = left diag(value) transpose(right), in no order of the values.
struct Decomposition {
  Columns left;               // rows x leftCount, orthonormal
  std::vector<double> value;  // one for each column of a, 0 or more
  Columns right;              // columns x columns, orthonormal
  bool settled;               // within 30 sweeps
};

// a: rows x columns with rows >= columns, overwritten. leftCount: columns .. rows, how many left vectors are wanted;
// those behind the number of values complete the basis. Reduced by pivoted Householder reflections to a triangle, whose
// transpose's columns are made orthogonal by Jacobi rotations (Hestenes 1958; Drmac and Veselic 2008).
Decomposition Decompose(Columns& a, int32_t rows, int32_t leftCount);

}  // namespace norv
