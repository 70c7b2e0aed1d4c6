#include "raster/right_inverse.h"

#include <algorithm>
#include <cmath>

namespace norv {
namespace {

const float* WeightsOf(const ResampleTable& table, int32_t k) {
  return &table.weights[static_cast<size_t>(k) * static_cast<size_t>(table.taps)];
}

double Product(const ResampleTable& table, int32_t a, int32_t b) {
  const int32_t first = std::max(table.start[a], table.start[b]);
  const int32_t end = std::min(table.start[a], table.start[b]) + table.taps;
  double sum = 0;
  for (int32_t i = first; i < end; ++i)
    sum += double{WeightsOf(table, a)[i - table.start[a]]} * WeightsOf(table, b)[i - table.start[b]];
  return sum;
}

// R R^T + d as L L^T (Cholesky), a band below the diagonal of each.
class BandedProducts {
 public:
  BandedProducts(const ResampleTable& table, double damping) : size_(table.Length()) {
    for (int32_t j = 0, first = 0; j < size_; ++j) {
      while (table.start[first] + table.taps <= table.start[j]) ++first;
      band_ = std::max(band_, j - first);
    }
    double diagonal = 0;
    for (int32_t j = 0; j < size_; ++j) diagonal += Product(table, j, j);
    damping *= diagonal / size_;
    lower_.resize(static_cast<size_t>(size_) * (band_ + 1));
    for (int32_t j = 0; j < size_; ++j)
      for (int32_t k = First(j); k <= j; ++k) {
        double sum = Product(table, j, k) + (j == k ? damping : 0);
        for (int32_t i = First(j); i < k; ++i)
          if (k - i <= band_) sum -= Lower(j, i) * Lower(k, i);
        Lower(j, k) = j == k ? std::sqrt(sum) : sum / Lower(k, k);
      }
  }

  // Column c of the inverse from row c - reach to c + reach, those outside 0.
  std::vector<double> Inverse(int32_t c, int32_t reach) {
    const int32_t last = std::min(c + 2 * reach, size_ - 1);  // what lies beyond has no say in what is asked for
    std::vector<double> column(static_cast<size_t>(int64_t{last} + 1 - c + reach));
    const auto at = [&](int32_t j) -> double& { return column[static_cast<size_t>(int64_t{j} - c + reach)]; };
    for (int32_t j = c; j <= last; ++j) {
      double sum = j == c ? 1 : 0;
      for (int32_t i = std::max(First(j), c); i < j; ++i) sum -= Lower(j, i) * at(i);
      at(j) = sum / Lower(j, j);
    }
    for (int32_t j = last; j >= std::max(c - reach, 0); --j) {
      double sum = at(j);
      for (int32_t i = j + 1; i <= std::min(j + band_, last); ++i) sum -= Lower(i, j) * at(i);
      at(j) = sum / Lower(j, j);
    }
    column.resize(static_cast<size_t>(2 * int64_t{reach} + 1));
    return column;
  }

 private:
  int32_t First(int32_t j) const { return std::max(j - band_, 0); }
  double& Lower(int32_t j, int32_t k) { return lower_[static_cast<size_t>(j) * (band_ + 1) + (j - k)]; }

  int32_t size_, band_ = 0;
  std::vector<double> lower_;
};

}  // namespace

ResampleTable RightInverse(const ResampleTable& reduction, int32_t length, double damping, int32_t reach) {
  const int32_t small = reduction.Length();
  // Small pixels first[k] to end[k] - 1 look at position k.
  std::vector<int32_t> first(static_cast<size_t>(length), small), end(static_cast<size_t>(length), 0);
  for (int32_t j = 0; j < small; ++j)
    for (int32_t i = 0; i < reduction.taps; ++i) {
      const size_t k = static_cast<size_t>(int64_t{reduction.start[j]} + i);
      first[k] = std::min(first[k], j);
      end[k] = j + 1;
    }
  int32_t span = 1;
  for (int32_t k = 0; k < length; ++k) span = std::max(span, end[k] - first[k]);
  ResampleTable table;
  table.taps = std::min(span + 2 * reach, small);
  for (int32_t k = 0; k < length; ++k) table.start.push_back(std::clamp(first[k] - reach, 0, small - table.taps));
  table.weights.resize(static_cast<size_t>(length) * table.taps);
  BandedProducts products(reduction, damping);
  for (int32_t j = 0; j < small; ++j) {
    const std::vector<double> column = products.Inverse(j, reach);
    for (int32_t i = 0; i < reduction.taps; ++i) {
      const int32_t k = reduction.start[j] + i;
      const double weight = WeightsOf(reduction, j)[i];
      float* row = &table.weights[static_cast<size_t>(k) * table.taps];
      for (int32_t l = std::max(j - reach, 0); l <= std::min(j + reach, small - 1); ++l)
        row[l - table.start[k]] += static_cast<float>(weight * column[static_cast<size_t>(int64_t{l} - j + reach)]);
    }
  }
  return table;
}

}  // namespace norv
