// The reduction of a large plane to a small one by a filter, and the adjoint of it, which enlarges. Both go row by row,
// so that a sweep over rows of a large plane carries them along.
#pragma once

#include <cstdint>
#include <vector>

#include "linear/matrix2.h"
#include "platform/memory.h"
#include "raster/filters.h"
#include "restore/blocks/plane_rows.h"

namespace norv {

class FilterLines;

// For one size of planes: large f*w x f*h, small w x h, f >= 1, w and h >= 1. Placement and mirrored edges are
// those of ShrinkMatrix; sums run along columns first, in tap order, single precision.
class FilterPair {
 public:
  FilterPair(FilterChoice filter, int32_t f, int32_t w, int32_t h);

  int32_t Factor() const { return f_; }
  int32_t SmallWidth() const { return w_; }
  int32_t SmallHeight() const { return h_; }

  // The last row of the large plane that row i of the small one is made of; the rows that span all that some small
  // rows are made of.
  int32_t LastSource(int32_t i) const { return static_cast<int32_t>(SourcesOf(i).end - 1); }
  Range Sources(Range small) const;
  // Row i of the reduction of `large`, of which the rows of Sources() count.
  void ReduceRow(const PlaneRows& large, int32_t i, float* small, FilterLines& lines) const;

  // The last row of the small plane that row r of the adjoint is made of, -1: none; the rows that span all that some
  // large rows are made of.
  int32_t LastShare(int64_t r) const {
    return firstShare_[r] == firstShare_[r + 1] ? -1 : shares_[firstShare_[r + 1] - 1].row;
  }
  Range Shares(Range large) const;
  // Row r of the adjoint of the reduction at `small`, overwritten. Rows are asked for in order, the lines having
  // begun; of `small` the rows from there up to LastShare(r) count.
  void AdjointRow(const PlaneRows& small, int64_t r, float* large, FilterLines& lines) const;

 private:
  friend class FilterLines;
  // What a small row gives to a large one.
  struct Share {
    int32_t row;  // of the small plane
    float tap;
  };

  void CollectShares();
  int32_t RingSize() const;
  Range SourcesOf(int64_t i) const;
  void FillMargins(float* line) const;
  void FoldMargins(float* line) const;
  void AdjointAlongRow(const float* small, float* large, FilterLines& lines) const;

  int32_t f_, w_, h_;
  matrix taps_;
  int64_t length_, offset_, margin_;  // taps; large pixels before f*i; pixels that a line needs outside the plane
  int64_t phaseLength_;               // every f-th pixel of a line is a phase of it; so many pixels a phase
  int64_t stride_;                    // floats from one line to the next
  std::vector<Share> shares_;         // by large rows, then by small rows and their taps
  std::vector<int64_t> firstShare_;   // of every large row, and the number of all
  std::vector<float> phaseTaps_;      // the taps of phase 0, then those of phase 1, ...
  size_t mostRows_ = 0;               // that a sum is made of
  int32_t ringSize_ = 0;
};

// What one thread needs at a time to reduce or widen rows: the pair itself is shared.
class FilterLines {
 public:
  explicit FilterLines(const FilterPair& pair);

  // Rows of an adjoint follow of which none is made of small rows before this one.
  void Begin(int64_t smallRow) { widened_ = static_cast<int32_t>(smallRow); }

 private:
  friend class FilterPair;
  float* Ring(int32_t i) const { return ring_.get() + (i % pair_.ringSize_) * pair_.stride_ + pair_.margin_; }

  const FilterPair& pair_;
  std::vector<const float*> rows_;
  std::vector<float> rowTaps_;
  AlignedArray<float> line_, phases_, padded_;
  AlignedArray<float> ring_;  // the latest small rows after the adjoint along their length: as wide as a large row
  int32_t widened_ = 0;       // the first small row that has not gone into the ring
};

}  // namespace norv
