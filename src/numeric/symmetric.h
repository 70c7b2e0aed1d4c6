// Eigenvalues and eigenvectors of a symmetric matrix of doubles.
#pragma once

#include <cstdint>

namespace norv {

// a: n x n, column-major, symmetric, overwritten with the eigenvectors as orthonormal columns; values: n eigenvalues,
// in no particular order. Householder reduction to three diagonals, then the QL iteration with implicit shifts
// (Wilkinson and Reinsch, Handbook for Automatic Computation II, 1971). False when a value was given its 30 iterations
// and had not settled; the values reached are left.
bool DecomposeSymmetric(int32_t n, double* a, double* values);

}  // namespace norv
