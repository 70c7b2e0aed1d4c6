#include "denoise/patch_search.h"

#include <algorithm>
#include <bit>

namespace norv {
namespace {

typedef float Eight __attribute__((vector_size(32)));
typedef float EightAnywhere __attribute__((vector_size(32), aligned(4), may_alias));

Eight Load(const float* p) { return *reinterpret_cast<const EightAnywhere*>(p); }

// The distances between the patch at `patch` and the ones at candidates, candidates + 1, ...: sixteen at a time, each a
// sum in the order of the patch's values.
void RowOfDistances(const float* patch, const float* candidates, int64_t stride, int32_t side, int32_t count,
                    float* distance) {
  for (int32_t k = 0; k < count; k += 16) {
    Eight low = {}, high = {};
    for (int32_t i = 0; i < side; ++i) {
      for (int32_t j = 0; j < side; ++j) {
        const float value = patch[i * stride + j];
        const float* other = candidates + i * stride + j + k;
        const Eight a = Load(other) - value, b = Load(other + 8) - value;
        low += a * a;
        high += b * b;
      }
    }
    *reinterpret_cast<EightAnywhere*>(distance + k) = low;
    *reinterpret_cast<EightAnywhere*>(distance + k + 8) = high;
  }
}

}  // namespace

PatchSearch::PatchSearch(const PatchPlane& plane, int32_t side, SearchWindow window)
    : plane_(plane), side_(side), window_(window), distance_(static_cast<size_t>(2 * window.radius + 1 + 16)) {}

void PatchSearch::Find(int32_t row, int32_t column, int32_t count, std::vector<uint32_t>& found) {
  const int32_t rowEnd = std::min(row + window_.radius, plane_.height - side_);
  const int32_t columnEnd = std::min(column + window_.radius, plane_.width - side_);
  // The window's grid passes through the given patch.
  const int32_t left = column - std::min(column, window_.radius) / window_.step * window_.step;
  const int32_t top = row - std::min(row, window_.radius) / window_.step * window_.step;
  candidates_.clear();
  for (int32_t r = top; r <= rowEnd; r += window_.step) {
    RowOfDistances(plane_.Row(row) + column, plane_.Row(r) + left, plane_.stride, side_, columnEnd - left + 1,
                   distance_.data());
    // Distances are not negative, so their bits are ordered as they are; the offset breaks ties. The given patch goes
    // before its equals.
    for (int32_t c = left; c <= columnEnd; c += window_.step) {
      const uint64_t order = r == row && c == column ? 0 : uint64_t{std::bit_cast<uint32_t>(distance_[c - left])} + 1;
      candidates_.push_back(order << 32 | static_cast<uint32_t>(r * plane_.stride + c));
    }
  }
  if (candidates_.size() > static_cast<size_t>(count)) {
    std::nth_element(candidates_.begin(), candidates_.begin() + count, candidates_.end());
    candidates_.resize(static_cast<size_t>(count));
  }
  found.clear();
  for (const uint64_t candidate : candidates_) found.push_back(static_cast<uint32_t>(candidate));
  std::sort(found.begin(), found.end());
}

}  // namespace norv
