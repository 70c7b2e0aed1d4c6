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

void PatchSums::AddTo(PatchSums& total) const {
  const int64_t offset = (first_ - total.first_) * stride_;
  for (size_t i = 0; i < values_.size(); ++i) {
    total.values_[i + offset] += values_[i];
    total.weights_[i + offset] += weights_[i];
  }
}

void PatchSums::Finish(PatchPlane& plane) const {
  for (int64_t r = first_; r < end_; ++r) {
    const float* value = values_.data() + (r - first_) * stride_;
    const float* weight = weights_.data() + (r - first_) * stride_;
    float* target = plane.Row(r);
    for (int32_t c = 0; c < plane.width; ++c)
      if (weight[c] > 0) target[c] = value[c] / weight[c];
  }
}

}  // namespace norv
