// Eigenvalues and eigenvectors of symmetric matrices: several times faster than a singular value decomposition, and as
// good where only what is large beside the largest eigenvalue matters (covariances, Gram matrices).
#pragma once

#include <cstdint>
#include <vector>

#include "numeric/columns.h"

namespace norv {

class dmatrix;

// A (n x n, symmetric; only finite elements) = vectors diag(values) transpose(vectors), values (n x 1) descending,
// vectors (n x n) orthonormal; both are dimensioned by the call. Errors are a few roundings of the largest value. False
// when an eigenvalue took more than 30 steps; the values reached are returned.
bool SymmetricEigen(const dmatrix& A, dmatrix& values, dmatrix& vectors);

// The same in place and in no order: the n columns of a become its eigenvectors. Householder reduction to tridiagonal
// form, then implicit QR steps with Wilkinson's shift (Golub and Van Loan, Matrix Computations, 8.3).
bool DiagonaliseSymmetric(Columns& a, int32_t n, std::vector<double>& values);

}  // namespace norv
