#include "linear/householder.h"

#include <cmath>
#include <limits>
#include <numeric>

namespace norv {

Reflection MakeReflector(const double* x, double* v, int32_t begin, int32_t end) {
  const int32_t block = BlockOf(begin), length = PaddedLength(end) - block;
  std::fill_n(v, PaddedLength(end), 0.0);
  std::copy(x + begin, x + end, v + begin);
  const double norm = std::sqrt(ActiveColumnKernels().dot(v + block, v + block, length));
  if (norm == 0) return {0, 0};
  const double result = v[begin] > 0 ? -norm : norm;
  v[begin] -= result;
  return {-1 / (result * v[begin]), result};
}

QrReduction::QrReduction(Columns& a, int32_t rows)
    : rows_(rows), reflectors_(rows, std::min(rows, a.Count())), source_(a.Count()), norm_(a.Count()) {
  std::iota(source_.begin(), source_.end(), 0);
  for (int32_t j = 0; j < a.Count(); ++j) norm_[j] = ActiveColumnKernels().dot(a[j], a[j], a.Length());
  sure_ = norm_;
  const double largest = norm_.empty() ? 0.0 : std::sqrt(*std::max_element(norm_.begin(), norm_.end()));
  const double smallest = largest * std::max(rows, a.Count()) * std::numeric_limits<double>::epsilon();
  while (rank_ < reflectors_.Count()) {
    Pivot(a, rank_);
    if (!Eliminate(a, rank_, smallest)) break;
    ++rank_;
  }
}

void QrReduction::Pivot(Columns& a, int32_t k) {
  const auto pivot = static_cast<int32_t>(std::max_element(norm_.begin() + k, norm_.end()) - norm_.begin());
  a.Exchange(k, pivot);
  std::swap(source_[k], source_[pivot]);
  std::swap(norm_[k], norm_[pivot]);
  std::swap(sure_[k], sure_[pivot]);
}

// Zeros column k below row k and reflects the columns behind it; false when the column has nothing left.
bool QrReduction::Eliminate(Columns& a, int32_t k, double smallest) {
  double* v = reflectors_[k];
  const Reflection made = MakeReflector(a[k], v, k, rows_);
  if (std::abs(made.result) <= smallest) return false;
  scale_.push_back(made.scale);
  a[k][k] = made.result;
  std::fill(a[k] + k + 1, a[k] + rows_, 0.0);
  ActiveColumnKernels().reflect(v, scale_[k], a.Pointers() + k + 1, a.Count() - k - 1, BlockOf(k), a.Length());
  for (int32_t j = k + 1; j < a.Count(); ++j) {
    norm_[j] -= a[j][k] * a[j][k];
    // Too much has cancelled: sum afresh what remains.
    if (norm_[j] > 1e-6 * sure_[j]) continue;
    double sum = 0;
    for (int32_t i = k + 1; i < rows_; ++i) sum += a[j][i] * a[j][i];
    norm_[j] = sure_[j] = sum;
  }
  return true;
}

void QrReduction::ApplyQ(Columns& x, int32_t begin, int32_t end) const {
  constexpr int32_t kGroup = 4;  // columns that stay in the nearest cache while all reflectors pass
  const auto reflect = ActiveColumnKernels().reflect;
  for (int32_t j = begin; j < end; j += kGroup)
    for (int32_t k = rank_ - 1; k >= 0; --k)
      reflect(reflectors_[k], scale_[k], x.Pointers() + j, std::min(kGroup, end - j), BlockOf(k), x.Length());
}

}  // namespace norv
