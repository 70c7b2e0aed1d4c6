#include "linear/symmetric.h"

#include <cmath>
#include <limits>

#include "linear/householder.h"

namespace norv {
namespace {

struct Tridiagonal {
  std::vector<double> diagonal, beside;
};

// a becomes the orthonormal columns in which it has the returned form.
Tridiagonal Tridiagonalise(Columns& a, int32_t n) {
  Tridiagonal t = {std::vector<double>(n), std::vector<double>(n)};
  Columns reflector(n, n + 3);  // and behind the reflectors the last two products w and a zero
  std::vector<double> scale(n);
  RankTwoChange change = {reflector[n + 2], reflector[n + 2]};
  const ColumnKernels& kernels = ActiveColumnKernels();
  for (int32_t k = 0; k < n; ++k) {
    double* column = a[k];
    for (int32_t i = k; i < n; ++i) column[i] -= change.v[i] * change.w[k] + change.w[i] * change.v[k];
    t.diagonal[k] = column[k];
    if (k + 1 >= n) break;
    const Reflection made = MakeReflector(column, reflector[k], k + 1, n);
    t.beside[k] = made.result;
    scale[k] = made.scale;
    const double* v = reflector[k];
    double* w = reflector[n + k % 2];
    std::fill_n(w, a.Length(), 0.0);
    const int32_t begin = BlockOf(k + 1);
    kernels.changeAndMultiply(a.Pointers(), k + 1, n, change, v, w, begin, a.Length());
    const double half = 0.5 * made.scale * made.scale * kernels.dot(v + begin, w + begin, a.Length() - begin);
    for (int32_t i = k + 1; i < n; ++i) w[i] = made.scale * w[i] - half * v[i];
    change = {v, w};
  }
  for (int32_t j = 0; j < n; ++j) {
    std::fill_n(a[j], a.Length(), 0.0);
    a[j][j] = 1;
  }
  for (int32_t k = n - 2; k >= 0; --k)
    kernels.reflect(reflector[k], scale[k], a.Pointers() + k + 1, n - k - 1, BlockOf(k + 1), a.Length());
  return t;
}

// One implicit QR step on rows low .. high, whose neighbours are all linked; rotation[k] mixes rows k and k + 1.
void Step(Tridiagonal& t, int32_t low, int32_t high, GivensRotation* rotation) {
  double *d = t.diagonal.data(), *e = t.beside.data();
  const double half = 0.5 * (d[high - 1] - d[high]), last = e[high - 1];
  const double root = std::sqrt(half * half + last * last);
  const double shift = d[high] - last * (last / (half >= 0 ? half + root : half - root));
  double x = d[low] - shift, bulge = e[low];
  for (int32_t k = low; k < high; ++k) {
    const double length = std::sqrt(x * x + bulge * bulge);
    const double c = length == 0 ? 1 : x / length, s = length == 0 ? 0 : bulge / length;
    if (k > low) e[k - 1] = length;
    const double change = (d[k + 1] - d[k]) * s + 2 * c * e[k];
    d[k] += s * change;
    d[k + 1] -= s * change;
    x = e[k] = c * change - e[k];
    bulge = s * e[k + 1];
    e[k + 1] *= c;
    rotation[k] = {c, s};
  }
}

// Links below a rounding of the whole matrix count as none, for it is no more exact than that.
double SmallestLink(const Tridiagonal& t) {
  double largest = 0;
  for (const std::vector<double>* part : {&t.diagonal, &t.beside})
    for (double value : *part) largest = std::max(largest, std::abs(value));
  return 0.5 * largest * std::numeric_limits<double>::epsilon();
}

bool IsLinked(const Tridiagonal& t, int32_t k, double smallest) {
  const double neighbours = std::abs(t.diagonal[k]) + std::abs(t.diagonal[k + 1]);
  return !(std::abs(t.beside[k]) <= smallest + std::numeric_limits<double>::epsilon() * neighbours);
}

}  // namespace

bool DecomposeSymmetricColumns(Columns& a, std::vector<double>& values) {
  constexpr int kMostSteps = 30;
  const int32_t n = a.Count();
  Tridiagonal t = Tridiagonalise(a, n);
  const double smallest = SmallestLink(t);
  std::vector<GivensRotation> rotation(n);
  bool settled = true;
  for (int32_t high = n - 1; high > 0 && settled; --high)
    for (int step = 0; IsLinked(t, high - 1, smallest); ++step) {
      if (step == kMostSteps) {
        settled = false;
        break;
      }
      int32_t low = high - 1;
      while (low > 0 && IsLinked(t, low - 1, smallest)) --low;
      Step(t, low, high, rotation.data());
      ActiveColumnKernels().rotateAll(a.Pointers() + low, rotation.data() + low, high - low, a.Length());
    }
  values = std::move(t.diagonal);
  return settled;
}

bool DecomposeSymmetric(int32_t n, double* a, double* values) {
  if (n <= 0) return true;
  Columns columns(n, n);
  for (int32_t j = 0; j < n; ++j) std::copy_n(a + int64_t{n} * j, n, columns[j]);
  std::vector<double> found;
  const bool settled = DecomposeSymmetricColumns(columns, found);
  std::copy(found.begin(), found.end(), values);
  for (int32_t j = 0; j < n; ++j) std::copy_n(columns[j], n, a + int64_t{n} * j);
  return settled;
}

}  // namespace norv
