// Eigenvalues and eigenvectors of symmetric matrices of doubles: several times faster than a singular value
// decomposition, and as good where only what is large beside the largest value matters (covariances, Gram matrices).
#pragma once

#include <cstdint>
#include <vector>

#include "linear/columns.h"

namespace norv {

// a: n x n, column-major, symmetric, overwritten with the eigenvectors as orthonormal columns; values: n eigenvalues,
// in no particular order, each to a few roundings of the largest. Householder reduction to three diagonals, then
// implicit QR steps with Wilkinson's shift (Golub and Van Loan, Matrix Computations, 8.3). False when a value was given
// its 30 steps and had not settled (a NaN, for instance); the values reached are left.
bool DecomposeSymmetric(int32_t n, double* a, double* values);

// The same of n columns of n rows.
bool DecomposeSymmetricColumns(Columns& a, std::vector<double>& values);

}  // namespace norv
