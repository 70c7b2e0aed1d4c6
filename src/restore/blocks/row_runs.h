// How the rows of a plane are shared out: blocks, by which sums are formed, and runs of blocks, by which work is.
#pragma once

#include <algorithm>
#include <cstdint>

#include "platform/team.h"
#include "platform/threads/standing_team.h"

namespace norv {

// A block has so many rows of the enlarged plane, or the most whole small rows below that, or one small row; the last
// one takes what is left over, so that no block is shorter than the others. Part of the results: sums are formed per
// block and added in the order of the blocks. Of a plane below twice the size there is one block.
inline constexpr int32_t kBlockRows = 32;

// Blocks depend on the plane alone. Runs are neighbouring blocks that one thread (or one machine) works on in one go;
// nothing of a result depends on how many there are.
class RowRuns {
 public:
  // The plane has factor * smallRows rows, 1 and more, for so many threads.
  RowRuns(int32_t smallRows, int32_t factor, int32_t threads = 1)
      : factor_(factor),
        smallRows_(smallRows),
        blockRows_(std::max(kBlockRows / factor, 1)),
        blocks_(std::max(smallRows / blockRows_, 1)) {
    const int64_t parts = StandingTeam::PartsFor(threads, blocks_, kBlocksWorthACut);
    runs_ = static_cast<int32_t>(std::min<int64_t>(blocks_, std::max<int64_t>(parts, threads)));
  }

  int32_t Height() const { return factor_ * smallRows_; }
  int32_t Blocks() const { return blocks_; }
  int32_t Runs() const { return runs_; }

  int64_t BlockOf(int64_t row) const { return std::min<int64_t>(row / (int64_t{factor_} * blockRows_), blocks_ - 1); }
  Range BlocksOf(int32_t run) const { return StaticPart(blocks_, run, runs_); }

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
  int32_t blocks_, runs_;
};

// Work on rows of so many pixels, each of which is made by itself: body(begin, end) on parts of them.
template <typename Body>
void ForRows(StandingTeam& team, int32_t width, int64_t rows, const Body& body) {
  team.ForParts(rows, kPixelsWorthACut / std::max(width, 1) + 1, body);
}

}  // namespace norv
