#include "denoise/patch_plane.h"

#include <algorithm>

namespace norv {
namespace {

constexpr int64_t kBeyond = 32;  // floats behind a row that a vector loop may touch

}  // namespace

PatchPlane::PatchPlane(int32_t newWidth, int32_t newHeight)
    : width(newWidth),
      height(newHeight),
      stride((newWidth + kBeyond + 15) / 16 * 16),
      values(static_cast<size_t>(stride * newHeight)) {}

PatchPlane::PatchPlane(const matrix& plane) : PatchPlane(plane.m, plane.n) {
  for (int32_t r = 0; r < height; ++r) std::copy_n(plane.z[r], width, Row(r));
}

void PatchPlane::CopyTo(matrix& plane) const {
  for (int32_t r = 0; r < height; ++r) std::copy_n(Row(r), width, plane.z[r]);
}

void PatchSums::Reset(const PatchPlane& plane, int64_t firstRow, int64_t endRow) {
  first_ = firstRow;
  end_ = endRow;
  stride_ = plane.stride;
  values_.assign(static_cast<size_t>((end_ - first_) * stride_), 0.0f);
  weights_.assign(values_.size(), 0.0f);
}

void PatchSums::AddTo(PatchSums& total, int64_t member, int64_t members) const {
  const Range columns = StaticPart(stride_, static_cast<int>(member), static_cast<int>(members));
  for (int64_t r = first_; r < end_; ++r) {
    const int64_t row = (r - first_) * stride_, target = (r - total.first_) * stride_;
    for (int64_t c = columns.begin; c < columns.end; ++c) {
      total.values_[target + c] += values_[row + c];
      total.weights_[target + c] += weights_[row + c];
    }
  }
}

void PatchSums::Finish(PatchPlane& plane, int threads) const {
  ParallelFor(threads, end_ - first_, [&](int64_t i) {
    const float *value = values_.data() + i * stride_, *weight = weights_.data() + i * stride_;
    float* target = plane.Row(first_ + i);
    for (int32_t c = 0; c < plane.width; ++c)
      if (weight[c] > 0) target[c] = value[c] / weight[c];
  });
}

}  // namespace norv
