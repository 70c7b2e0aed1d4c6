// The double-precision matrix for small systems and decompositions.
#pragma once

#include <cstdint>

namespace norv {

// m x n doubles, column-major: element (i, j) is x[i + m*j] = z[j][i]. Owns x, z and ip (optional, m + 1 entries,
// carried by copies). Sizes that overflow 32 bits or that memory cannot hold print the out-of-memory message on
// standard output and throw it (const char*), leaving the matrix empty.
class dmatrix {
 public:
  int32_t m = 0;
  int32_t n = 0;
  int32_t mn = 0;
  int32_t* ip = nullptr;
  double* x = nullptr;
  double** z = nullptr;

  dmatrix() = default;
  // Contents undefined. Empty with m = n = 0 when either size is 0.
  dmatrix(int32_t rows, int32_t columns);
  dmatrix(const dmatrix& other);
  dmatrix(dmatrix&& other) noexcept { swap(other); }
  dmatrix& operator=(dmatrix other) noexcept {
    swap(other);
    return *this;
  }
  ~dmatrix() { freemem(); }
  void swap(dmatrix& other) noexcept;

  // Re-dimensions. Equal sizes: nothing. Equal count: elements are kept and reinterpreted. Otherwise contents
  // undefined.
  void dim(int32_t rows, int32_t columns);
  void freemem();

  // Elements of r, as many as there are here (asserted).
  void copydata(const dmatrix& r);
  void fill(double value);

  // this = a b, this = transpose(a) b and this = a transpose(b). The target has the right size already (asserted) and
  // is none of the factors. mult and multTB sum in the order of the inner index, multTA in eight partial sums.
  void mult(const dmatrix& a, const dmatrix& b);
  void multTA(const dmatrix& a, const dmatrix& b);
  void multTB(const dmatrix& a, const dmatrix& b);

  // Singular value decomposition of this matrix (m x n, any shape): U (m x n), W (n x 1, descending, never negative)
  // and V (n x n) such that this = U diag(W) transpose(V). Columns of V are orthonormal, and so are those of U; only
  // when m < n the last n - m columns of U are zero, for there is no room for them, and their singular values are zero
  // too. U, W and V are dimensioned by the call. "No SVD convergence in 30 iterations." is printed when that happens
  // (an infinite or NaN element, for instance); the values reached are returned.
  void svd(dmatrix& U, dmatrix& W, dmatrix& V) const;
};

}  // namespace norv
