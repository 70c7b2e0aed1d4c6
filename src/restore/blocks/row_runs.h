// How the rows of a plane are shared out: blocks, by which sums are formed, and runs of blocks, by which work is.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

#include "platform/team.h"
#include "platform/threads/standing_team.h"

namespace norv {

// A block has so many rows of the enlarged plane, or the most whole small rows below that, or one small row; the last
// one takes what is left over, so that no block is shorter than the others. Part of the results: sums are formed per
// block and added in the order of the blocks. Of a plane below twice the size there is one block.
inline constexpr int32_t kBlockRows = 32;

// All rows there are.
inline constexpr Range kAllRows{0, std::numeric_limits<int32_t>::max()};

// As far as they are rows of a plane.
constexpr Range RowsWithin(Range rows, int64_t height) {
  return {std::clamp<int64_t>(rows.begin, 0, height), std::clamp<int64_t>(rows.end, 0, height)};
}

// All from the first to the last of both.
constexpr Range RowsTogether(Range a, Range b) { return {std::min(a.begin, b.begin), std::max(a.end, b.end)}; }

// Blocks depend on the plane alone. They are shared out in parts, one for each process that works on the plane (of
// which this is one), and those in runs: neighbouring blocks that one thread works on in one go. Nothing of a result
// depends on how many parts or runs there are.
class RowRuns {
 public:
  // The plane has factor * smallRows rows, 1 and more, for so many threads. parts: at most Blocks().
  RowRuns(int32_t smallRows, int32_t factor, int32_t threads = 1, int32_t part = 0, int32_t parts = 1)
      : factor_(factor),
        smallRows_(smallRows),
        blockRows_(std::max(kBlockRows / factor, 1)),
        blocks_(std::max(smallRows / blockRows_, 1)),
        parts_(parts),
        own_(BlocksOfPart(part)) {
    const int64_t count = own_.end - own_.begin, cuts = StandingTeam::PartsFor(threads, count, kBlocksWorthACut);
    runs_ = static_cast<int32_t>(std::min<int64_t>(count, std::max<int64_t>(cuts, threads)));
  }

  int32_t Height() const { return factor_ * smallRows_; }
  int32_t Blocks() const { return blocks_; }
  int32_t Runs() const { return runs_; }

  int64_t BlockOf(int64_t row) const { return std::min<int64_t>(row / (int64_t{factor_} * blockRows_), blocks_ - 1); }
  Range BlocksOf(int32_t run) const {
    const Range among = StaticPart(own_.end - own_.begin, run, runs_);
    return {own_.begin + among.begin, own_.begin + among.end};
  }
  int32_t Parts() const { return parts_; }
  Range BlocksOfPart(int32_t part) const { return StaticPart(blocks_, part, parts_); }
  // Of this one's part.
  Range OwnRows() const { return Rows(own_); }
  Range OwnSmallRows() const { return SmallRows(own_); }
  // Rows whose weights its part needs: the differences of the row above add to its first one.
  Range WeighedRows() const { return {std::max<int64_t>(OwnRows().begin - 1, 0), OwnRows().end}; }

  // Rows of the small plane and of the enlarged one.
  Range SmallRows(Range blocks) const {
    return {blocks.begin * blockRows_, blocks.end == blocks_ ? smallRows_ : blocks.end * blockRows_};
  }
  Range Rows(Range blocks) const {
    const Range small = SmallRows(blocks);
    return {factor_ * small.begin, factor_ * small.end};
  }

 private:
  // Every run computes its neighbours' border rows once more, which is to stay a small part of it.
  static constexpr int64_t kBlocksWorthACut = 4;

  int32_t factor_, smallRows_;
  int32_t blockRows_;  // of the small plane
  int32_t blocks_, parts_;
  Range own_;  // blocks of this one's part
  int32_t runs_;
};

// Work on rows of so many pixels, each of which is made by itself: body(begin, end) on parts of them.
template <typename Body>
void ForRows(StandingTeam& team, int32_t width, int64_t rows, const Body& body) {
  team.ForParts(rows, kPixelsWorthACut / std::max(width, 1) + 1, body);
}

}  // namespace norv
