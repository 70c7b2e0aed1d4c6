#include "denoise/patch_search.h"

#include <algorithm>
#include <bit>

#include "simd/patches/kernels.h"

namespace norv {

PatchSearch::PatchSearch(const PatchPlane& plane, int32_t side, SearchWindow window)
    : plane_(plane),
      side_(side),
      window_(window),
      distance_(static_cast<size_t>(2 * window.radius + 1 + kPatchesPerTile)) {}

void PatchSearch::Find(int32_t row, int32_t column, int32_t count, std::vector<uint32_t>& found) {
  const int32_t rowEnd = std::min(row + window_.radius, plane_.height - side_);
  const int32_t columnEnd = std::min(column + window_.radius, plane_.width - side_);
  // The window's grid passes through the given patch.
  const int32_t left = column - std::min(column, window_.radius) / window_.step * window_.step;
  const int32_t top = row - std::min(row, window_.radius) / window_.step * window_.step;
  candidates_.clear();
  const auto distances = ActivePatchKernels().distances;
  for (int32_t r = top; r <= rowEnd; r += window_.step) {
    distances(plane_.Row(row) + column, plane_.Row(r) + left, plane_.stride, side_, columnEnd - left + 1,
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
