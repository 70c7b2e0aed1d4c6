// Double columns on which decompositions work: aligned and padded with zeros to whole blocks, so that the kernels need
// no tails. Every sum has one order, which depends on the padded length only.
#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/memory.h"
#include "simd/columns/kernels.h"

namespace norv {

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
  const double* const* Pointers() const { return column_.data(); }
  void Exchange(int32_t i, int32_t j) { std::swap(column_[i], column_[j]); }

 private:
  static size_t Size(int32_t a, int32_t b) { return static_cast<size_t>(a) * static_cast<size_t>(b); }

  int32_t length_;
  AlignedArray<double> store_;
  std::vector<double*> column_;
};

}  // namespace norv
