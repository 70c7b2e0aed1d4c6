#include "linear/svd.h"

#include <cmath>
#include <limits>

#include "linear/dmatrix.h"
#include "linear/householder.h"
#include "linear/index_sort.h"
#include "linear/symmetric.h"
#include "platform/console.h"

namespace norv {
namespace {

constexpr int kMostSweeps = 30;

// Columns that Jacobi rotations make orthogonal by their first `length` elements; the others are rotated with them.
struct JacobiColumns {
  Columns& column;
  int32_t length;
  std::vector<double> norm;  // squared
  double tolerance;          // squared cosine that counts as a right angle
  const ColumnKernels& kernels = ActiveColumnKernels();
};

// Rotates columns p and q to a right angle; false when they already have one.
bool MakeOrthogonal(JacobiColumns& t, int32_t p, int32_t q) {
  const double along = t.kernels.dot(t.column[p], t.column[q], t.length);
  if (along * along <= t.tolerance * t.norm[p] * t.norm[q]) return false;
  const double difference = t.norm[q] - t.norm[p];
  const double hypotenuse = std::sqrt(difference * difference + 4 * along * along);
  const double tangent = 2 * along / (difference >= 0 ? difference + hypotenuse : difference - hypotenuse);
  const double cosine = 1 / std::sqrt(1 + tangent * tangent);
  t.kernels.rotate(t.column[p], t.column[q], {cosine, -cosine * tangent}, t.column.Length());
  t.norm[p] -= tangent * along;
  t.norm[q] += tangent * along;
  return true;
}

// One pass over all pairs, the longest remaining column first (de Rijk 1989); false when no pair was rotated.
bool Sweep(JacobiColumns& t) {
  const int32_t n = t.column.Count();
  bool rotated = false;
  for (int32_t j = 0; j < n; ++j) t.norm[j] = t.kernels.dot(t.column[j], t.column[j], t.length);
  for (int32_t p = 0; p < n; ++p) {
    const auto longest = static_cast<int32_t>(std::max_element(t.norm.begin() + p, t.norm.end()) - t.norm.begin());
    t.column.Exchange(p, longest);
    std::swap(t.norm[p], t.norm[longest]);
    for (int32_t q = p + 1; q < n; ++q) rotated |= MakeOrthogonal(t, p, q);
  }
  return rotated;
}

bool MakeAllOrthogonal(Columns& column, int32_t length) {
  constexpr double kRounding = std::numeric_limits<double>::epsilon();
  JacobiColumns t = {column, length, std::vector<double>(column.Count()), length * kRounding * kRounding};
  for (int sweep = 0; sweep < kMostSweeps; ++sweep)
    if (!Sweep(t)) return true;
  return false;
}

// The eigenvectors of R transpose(R) for the upper triangle R with `rank` rows.
Columns EigenvectorsOf(const Columns& r, int32_t rank) {
  Columns gram(rank, rank);
  ActiveColumnKernels().multiplyTransposed(r.Pointers(), r.Count(), r.Pointers(), gram.Pointers(), rank, rank);
  std::vector<double> values;
  DecomposeSymmetricColumns(gram, values);
  return gram;
}

// Fills columns `from` and beyond so that they are orthonormal to those before, which are orthonormal.
void CompleteBasis(Columns& basis, int32_t rows, int32_t from) {
  if (from == basis.Count()) return;
  Columns given(rows, from);
  for (int32_t j = 0; j < from; ++j) std::copy_n(basis[j], rows, given[j]);
  const QrReduction reduction(given, rows);
  for (int32_t j = from; j < basis.Count(); ++j) basis[j][j] = 1;
  reduction.ApplyQ(basis, from, basis.Count());
}

}  // namespace

Decomposition Decompose(Columns& a, int32_t rows, int32_t leftCount) {
  const int32_t columns = a.Count();
  const QrReduction reduction(a, rows);
  const int32_t rank = reduction.Rank(), length = PaddedLength(columns);
  // What the Jacobi rotations would do from scratch in eight sweeps, the eigenvectors of R transpose(R) do nearly; two
  // or three sweeps make it exact.
  const Columns start = EigenvectorsOf(a, rank);
  // Above: transpose(R), rows in the matrix's own order of columns, times them. Below: the rotations gathered.
  Columns stacked(length + rank, rank);
  for (int32_t i = 0; i < rank; ++i) std::copy_n(start[i], rank, stacked[i] + length);
  Columns triangle(columns, rank);
  for (int32_t i = 0; i < rank; ++i)
    for (int32_t j = i; j < columns; ++j) triangle[i][reduction.Source(j)] = a[j][i];
  const ColumnKernels& kernels = ActiveColumnKernels();
  kernels.multiply(triangle.Pointers(), rank, start.Pointers(), stacked.Pointers(), columns, rank);
  Decomposition result = {Columns(rows, leftCount), std::vector<double>(columns), Columns(columns, columns), true};
  result.settled = MakeAllOrthogonal(stacked, length);
  for (int32_t j = 0; j < rank; ++j) {
    const double value = std::sqrt(kernels.dot(stacked[j], stacked[j], length));
    result.value[j] = value;
    for (int32_t i = 0; i < columns; ++i) result.right[j][i] = stacked[j][i] / value;
    std::copy_n(stacked[j] + length, rank, result.left[j]);
  }
  for (int32_t j = rank; j < leftCount; ++j) result.left[j][j] = 1;
  reduction.ApplyQ(result.left, 0, leftCount);
  CompleteBasis(result.right, columns, rank);
  return result;
}

namespace {

// The power of two that brings the largest magnitude near 1, so that no square overflows or vanishes; NaN when an
// element is not finite, for then nothing can be said of any other.
double ScaleOf(const dmatrix& a) {
  double largest = 0;
  for (int32_t i = 0; i < a.mn; ++i) {
    if (!std::isfinite(a.x[i])) return std::numeric_limits<double>::quiet_NaN();
    largest = std::max(largest, std::abs(a.x[i]));
  }
  int exponent = 0;
  std::frexp(largest, &exponent);
  return std::ldexp(1.0, std::clamp(-exponent, -1000, 1000));
}

// The longer side becomes the rows.
Columns TallCopy(const dmatrix& a, double scale) {
  const bool tall = a.m >= a.n;
  Columns copy(tall ? a.m : a.n, tall ? a.n : a.m);
  for (int32_t j = 0; j < a.n; ++j)
    for (int32_t i = 0; i < a.m; ++i) (tall ? copy[j][i] : copy[i][j]) = a.z[j][i] * scale;
  return copy;
}

}  // namespace

void dmatrix::svd(dmatrix& U, dmatrix& W, dmatrix& V) const {
  const double scale = ScaleOf(*this);
  Columns tall = TallCopy(*this, scale);
  if (&U != this) U = *this;
  W.dim(U.n, 1);
  V.dim(U.n, U.n);
  if (U.mn == 0) return;
  Decomposition found = Decompose(tall, std::max(U.m, U.n), U.n);
  if (!found.settled) Say("No SVD convergence in 30 iterations.");
  found.value.resize(U.n, -1.0);  // vectors without a value go behind those of zeros
  const bool transposed = U.m < U.n;
  const Columns &left = transposed ? found.right : found.left, &right = transposed ? found.left : found.right;
  std::vector<int32_t> order(U.n);
  IndexSort(order.data(), found.value.data(), U.n);
  for (int32_t k = 0; k < U.n; ++k) {
    const int32_t from = order[U.n - 1 - k];
    W.x[k] = std::max(found.value[from], 0.0) / scale;
    if (from < left.Count())
      std::copy_n(left[from], U.m, U.z[k]);
    else
      std::fill_n(U.z[k], U.m, 0.0);
    std::copy_n(right[from], U.n, V.z[k]);
  }
}

}  // namespace norv
