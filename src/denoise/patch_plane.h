// A plane as patch work wants it, and sums of overlapping patches.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "linear/matrix2.h"
#include "platform/team.h"

namespace norv {

// Width x height values whose rows may be read a vector beyond their end (zeros there).
struct PatchPlane {
  int32_t width = 0, height = 0;
  int64_t stride = 0;
  std::vector<float> values;

  PatchPlane(int32_t newWidth, int32_t newHeight);
  explicit PatchPlane(const matrix& plane);
  float* Row(int64_t r) { return values.data() + r * stride; }
  const float* Row(int64_t r) const { return values.data() + r * stride; }
  void CopyTo(matrix& plane) const;
};

// Weighted sums of patches over the rows first .. end - 1 of a plane, by one thread.
class PatchSums {
 public:
  void Reset(const PatchPlane& plane, int64_t firstRow, int64_t endRow);
  int64_t FirstRow() const { return first_; }
  int64_t EndRow() const { return end_; }
  // Where the sums of weighted values and of weights of a row of the plane are; rows may be written a vector beyond
  // their end.
  float* Values(int64_t row) { return values_.data() + (row - first_) * stride_; }
  float* Weights(int64_t row) { return weights_.data() + (row - first_) * stride_; }
  // Adds these sums to others that cover their rows: of all rows the member's part of the columns.
  void AddTo(PatchSums& total, int64_t member, int64_t members) const;
  // The weighted means, by so many threads; where nothing was added the plane keeps its value.
  void Finish(PatchPlane& plane, int threads) const;

 private:
  int64_t first_ = 0, end_ = 0, stride_ = 0;
  std::vector<float> values_, weights_;
};

// Calls work(i, sums) for each of `count` strips with sums of its own, which are then added to total(i), every element
// in the order of the strips, whoever made them.
template <typename Work, typename Total>
void SumStrips(int threads, int64_t count, const Work& work, const Total& total) {
  constexpr int64_t kAtOnce = 64;  // strips whose sums are in memory
  for (int64_t first = 0; first < count; first += kAtOnce) {
    std::vector<PatchSums> sums(static_cast<size_t>(std::min(kAtOnce, count - first)));
    ParallelFor(threads, static_cast<int64_t>(sums.size()), [&](int64_t i) { work(first + i, sums[i]); });
    ParallelFor(threads, threads, [&](int64_t member) {
      for (size_t i = 0; i < sums.size(); ++i) sums[i].AddTo(total(first + static_cast<int64_t>(i)), member, threads);
    });
  }
}

}  // namespace norv
