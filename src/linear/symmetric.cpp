#include "linear/symmetric.h"

#include <cmath>
#include <limits>

#include "linear/householder.h"

namespace norv {
namespace {

// Pending change of the columns not yet eliminated: column j loses v w[j] + w v[j].
struct RankTwo {
  const double* v;
  const double* w;
};

// Changes `width` columns and takes their products with `next`, in one pass over them.
template <int32_t width>
void ChangeAndMultiply(double* const* column, int32_t j, const RankTwo& change, const double* next, double* product,
                       int32_t begin, int32_t length) {
  Double4 even[width] = {}, odd[width] = {};
  for (int32_t i = begin; i < length; i += kColumnBlock)
    for (int32_t k = 0; k < width; ++k) {
      double* x = column[j + k] + i;
      At(x) -= At(change.v + i) * change.w[j + k] + At(change.w + i) * change.v[j + k];
      At(x + 4) -= At(change.v + i + 4) * change.w[j + k] + At(change.w + i + 4) * change.v[j + k];
      even[k] += At(x) * At(next + i);
      odd[k] += At(x + 4) * At(next + i + 4);
    }
  for (int32_t k = 0; k < width; ++k) product[j + k] = Sum(even[k] + odd[k]);
}

struct Tridiagonal {
  std::vector<double> diagonal, beside;
};

// a becomes the orthonormal columns in which it has the returned form.
Tridiagonal Tridiagonalise(Columns& a, int32_t n) {
  Tridiagonal t = {std::vector<double>(n), std::vector<double>(n)};
  Columns reflector(n, n), zero(n, 2), product(n, 2);
  std::vector<double> scale(n);
  RankTwo change = {zero[0], zero[0]};
  for (int32_t k = 0; k < n; ++k) {
    double* column = a[k];
    for (int32_t i = k; i < n; ++i) column[i] -= change.v[i] * change.w[k] + change.w[i] * change.v[k];
    t.diagonal[k] = column[k];
    if (k + 1 >= n) break;
    const Reflection made = MakeReflector(column, reflector[k], k + 1, n);
    t.beside[k] = made.result;
    scale[k] = made.scale;
    const double* v = reflector[k];
    double* w = product[k % 2];
    std::fill_n(w, a.Length(), 0.0);
    const int32_t begin = BlockOf(k + 1);
    int32_t j = k + 1;
    for (; j + 4 <= n; j += 4) ChangeAndMultiply<4>(a.Pointers(), j, change, v, w, begin, a.Length());
    for (; j < n; ++j) ChangeAndMultiply<1>(a.Pointers(), j, change, v, w, begin, a.Length());
    const double half = 0.5 * made.scale * made.scale * Dot(v + begin, w + begin, a.Length() - begin);
    for (int32_t i = k + 1; i < n; ++i) w[i] = made.scale * w[i] - half * v[i];
    change = {v, w};
  }
  for (int32_t j = 0; j < n; ++j) {
    std::fill_n(a[j], a.Length(), 0.0);
    a[j][j] = 1;
  }
  for (int32_t k = n - 2; k >= 0; --k)
    ReflectAll(reflector[k], scale[k], a.Pointers() + k + 1, n - k - 1, BlockOf(k + 1), a.Length());
  return t;
}

struct Turn {
  double c, s;
};

// One implicit QR step on rows low .. high, whose neighbours are all linked; turn[k] mixes rows k and k + 1.
void Step(Tridiagonal& t, int32_t low, int32_t high, Turn* turn) {
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
    turn[k] = {c, s};
  }
}

// The turns of a step on the vectors, `vectors4` times four rows at a time so that the column passed on stays in
// registers.
template <int32_t vectors4>
void TurnRows(double* const* column, const Turn* turn, int32_t low, int32_t high, int32_t row) {
  Double4 carried[vectors4];
  for (int32_t i = 0; i < vectors4; ++i) carried[i] = At(column[low] + row + 4 * i);
  for (int32_t k = low; k < high; ++k) {
    const double c = turn[k].c, s = turn[k].s;
    for (int32_t i = 0; i < vectors4; ++i) {
      const Double4 next = At(column[k + 1] + row + 4 * i);
      At(column[k] + row + 4 * i) = c * carried[i] + s * next;
      carried[i] = c * next - s * carried[i];
    }
  }
  for (int32_t i = 0; i < vectors4; ++i) At(column[high] + row + 4 * i) = carried[i];
}

void TurnColumns(Columns& a, const Turn* turn, int32_t low, int32_t high) {
  int32_t row = 0;
  for (; row + 16 <= a.Length(); row += 16) TurnRows<4>(a.Pointers(), turn, low, high, row);
  for (; row < a.Length(); row += 8) TurnRows<2>(a.Pointers(), turn, low, high, row);
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

bool DecomposeSymmetric(Columns& a, std::vector<double>& values) {
  constexpr int kMostSteps = 30;
  const int32_t n = a.Count();
  Tridiagonal t = Tridiagonalise(a, n);
  const double smallest = SmallestLink(t);
  std::vector<Turn> turn(n);
  bool settled = true;
  for (int32_t high = n - 1; high > 0 && settled; --high)
    for (int step = 0; IsLinked(t, high - 1, smallest); ++step) {
      if (step == kMostSteps) {
        settled = false;
        break;
      }
      int32_t low = high - 1;
      while (low > 0 && IsLinked(t, low - 1, smallest)) --low;
      Step(t, low, high, turn.data());
      TurnColumns(a, turn.data(), low, high);
    }
  values = std::move(t.diagonal);
  return settled;
}

bool DecomposeSymmetric(int32_t n, double* a, double* values) {
  if (n <= 0) return true;
  Columns columns(n, n);
  for (int32_t j = 0; j < n; ++j) std::copy_n(a + int64_t{n} * j, n, columns[j]);
  std::vector<double> found;
  const bool settled = DecomposeSymmetric(columns, found);
  std::copy(found.begin(), found.end(), values);
  for (int32_t j = 0; j < n; ++j) std::copy_n(columns[j], n, a + int64_t{n} * j);
  return settled;
}

}  // namespace norv
