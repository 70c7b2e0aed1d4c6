#include "kit/measure/reduced_rows.h"

#include <algorithm>
#include <utility>

#include "kit/scale/resize.h"

namespace norv {
namespace {

Picture Empty(const Picture& like) {
  Picture picture;
  picture.channels = like.channels;
  picture.bits = like.bits;
  return picture;
}

ResampleTable WholeTable(int32_t to, int32_t factor, const FilterChoice& filter) {
  matrix taps;
  BuildTaps(taps, factor, filter);
  const int64_t length = int64_t{to} * factor, offset = (taps.mn - factor) / 2;
  ResampleTable table;
  table.taps = static_cast<int32_t>(std::min<int64_t>(taps.mn, length));
  for (int64_t k = 0; k < to; ++k) {
    const int64_t first = factor * k - offset, start = std::clamp<int64_t>(first, 0, length - table.taps);
    std::vector<float> weights(static_cast<size_t>(table.taps));
    for (int64_t i = 0; i < taps.mn; ++i)
      weights[static_cast<size_t>(MirrorIndex(first + i, length) - start)] += taps.x[i];
    table.start.push_back(static_cast<int32_t>(start));
    table.weights.insert(table.weights.end(), weights.begin(), weights.end());
  }
  return table;
}

}  // namespace

ResampleTable ReductionTable(int32_t from, int32_t to, const FilterChoice& filter) {
  if (from % to == 0) return WholeTable(to, from / to, filter);
  return ResizeTable(from, to, ResizeFilter::cubic);
}

ReducedRows::ReducedRows(const PictureSize& from, const PictureSize& to, const FilterChoice& filter)
    : across_(ReductionTable(from.width, to.width, filter)),
      down_(ReductionTable(from.height, to.height, filter)),
      height_(from.height) {}

// Behind those that are held, of which what no later row is made of goes.
void ReducedRows::Append(const Picture& rows) {
  const int32_t needed = made_ < down_.Length() ? SourceOf(down_, height_, {made_, 1}).first : taken_;
  const int32_t first = std::max(first_, std::min(needed, taken_)), kept = taken_ - first;
  Picture held(across_.Length(), kept + rows.Height(), rows.channels, rows.bits);
  if (kept > 0) CopyPart(held_, first - first_, kept, held, 0);
  Picture fresh = Empty(rows);
  for (int32_t k = 0; k < rows.channels; ++k) ResampleAlongRows(rows.plane[k], fresh.plane[k], across_);
  CopyPart(fresh, 0, rows.Height(), held, kept);
  held_ = std::move(held);
  first_ = first;
  taken_ += rows.Height();
}

Picture ReducedRows::Take(const Picture& rows) {
  Append(rows);
  int32_t count = 0;
  const auto isThere = [&](int32_t row) {
    const AxisPart part = SourceOf(down_, height_, {row, 1});
    return part.first + part.count <= taken_;
  };
  while (made_ + count < down_.Length() && isThere(made_ + count)) ++count;
  Picture reduced = Empty(rows);
  for (int32_t k = 0; k < rows.channels && count > 0; ++k)
    ResampleAlongColumns({held_.plane[k], first_, height_}, reduced.plane[k], down_, made_, count);
  made_ += count;
  return reduced;
}

void KeptRows::Append(Picture rows) {
  const int32_t first = std::exchange(next_, next_ + rows.Height());
  groups_.push_back({first, std::move(rows)});
}

Picture KeptRows::Rows(int32_t first, int32_t count) const {
  const Picture& like = groups_.front().rows;
  Picture rows(like.Width(), count, like.channels, like.bits);
  for (const Group& group : groups_) {
    const int32_t from = std::max(first, group.first), end = std::min(first + count, group.End());
    if (from < end) CopyPart(group.rows, from - group.first, end - from, rows, from - first);
  }
  return rows;
}

void KeptRows::ForgetBefore(int32_t row) {
  while (!groups_.empty() && groups_.front().End() <= row) groups_.pop_front();
}

}  // namespace norv
