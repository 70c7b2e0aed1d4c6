// Double columns on which decompositions work: aligned and padded with zeros to whole blocks, so that the loops below
// need no tails. Every sum has one order, which depends on the padded length only.
#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/memory.h"

namespace norv {

inline constexpr int32_t kColumnBlock = 8;

constexpr int32_t PaddedLength(int32_t rows) { return (rows + kColumnBlock - 1) / kColumnBlock * kColumnBlock; }

// `count` columns of PaddedLength(rows) doubles, all zero. Columns are exchanged by their pointers.
class Columns {
 public:
  Columns(int32_t rows, int32_t count)
      : length_(PaddedLength(rows)), store_(MakeAligned<double>(Size(length_, count))), column_(Size(count, 1)) {
    std::fill_n(store_.get(), Size(length_, count), 0.0);
    for (int32_t j = 0; j < count; ++j) column_[j] = store_.get() + Size(length_, j);
  }
  int32_t Length() const { return length_; }
  int32_t Count() const { return static_cast<int32_t>(column_.size()); }
  double* operator[](int32_t j) { return column_[j]; }
  const double* operator[](int32_t j) const { return column_[j]; }
  double* const* Pointers() { return column_.data(); }
  void Exchange(int32_t i, int32_t j) { std::swap(column_[i], column_[j]); }

 private:
  static size_t Size(int32_t a, int32_t b) { return static_cast<size_t>(a) * static_cast<size_t>(b); }

  int32_t length_;
  AlignedArray<double> store_;
  std::vector<double*> column_;
};

// Four doubles, as wide as the narrowest machine's registers.
using Double4 [[gnu::vector_size(32), gnu::may_alias]] = double;

inline Double4& At(double* x) { return *reinterpret_cast<Double4*>(x); }
inline const Double4& At(const double* x) { return *reinterpret_cast<const Double4*>(x); }
inline double Sum(Double4 v) { return (v[0] + v[2]) + (v[1] + v[3]); }

inline double Dot(const double* a, const double* b, int32_t length) {
  Double4 even = {}, odd = {};
  for (int32_t i = 0; i < length; i += kColumnBlock) {
    even += At(a + i) * At(b + i);
    odd += At(a + i + 4) * At(b + i + 4);
  }
  return Sum(even + odd);
}

// (a, b) = (c a - s b, s a + c b)
inline void Rotate(double* a, double* b, double c, double s, int32_t length) {
  for (int32_t i = 0; i < length; i += 4) {
    const Double4 p = At(a + i), q = At(b + i);
    At(a + i) = c * p - s * q;
    At(b + i) = s * p + c * q;
  }
}

}  // namespace norv
