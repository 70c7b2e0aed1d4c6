// The reduction of a large plane to a small one by a filter, and the adjoint of it, which enlarges. Both go row by row,
// so that a sweep over the rows of a large plane carries them along.
#pragma once

#include <cstdint>
#include <vector>

#include "linear/matrix2.h"
#include "platform/memory.h"
#include "raster/filters.h"

namespace norv {

// For one size of planes: large f*w x f*h, small w x h, f >= 1, w and h >= 1. Placement and mirrored edges are
// those of ShrinkMatrix; sums run along columns first, in tap order, single precision. Not for several threads at once.
class FilterPair {
 public:
  FilterPair(FilterChoice filter, int32_t f, int32_t w, int32_t h);

  int32_t Factor() const { return f_; }
  int32_t SmallWidth() const { return w_; }
  int32_t SmallHeight() const { return h_; }

  // The last row of the large plane that row i of the small one is made of.
  int32_t LastSource(int32_t i) const;
  // Row i of the reduction of `large`, of which the rows up to LastSource(i) count.
  void ReduceRow(const matrix& large, int32_t i, float* small);

  // Row r of the adjoint of the reduction at `small`, overwritten. Rows are asked for in order from 0 on; 0 starts
  // anew.
  void AdjointRow(const matrix& small, int32_t r, float* large);

 private:
  // What a small row gives to a large one.
  struct Share {
    int32_t row;  // of the small plane
    float tap;
  };

  void CollectShares();
  int32_t RingSize() const;
  float* Ring(int32_t i) const { return ring_.get() + (i % ringSize_) * stride_ + margin_; }
  void FillMargins(float* line) const;
  void FoldMargins(float* line) const;
  void AdjointAlongRow(const float* small, float* large);

  int32_t f_, w_, h_;
  matrix taps_;
  int64_t length_, offset_, margin_;  // taps; large pixels before f*i; pixels that a line needs outside the plane
  int64_t phaseLength_;               // every f-th pixel of a line is a phase of it; so many pixels a phase
  int64_t stride_;                    // floats from one line to the next
  std::vector<Share> shares_;         // by large rows, then by small rows and their taps
  std::vector<int64_t> firstShare_;   // of every large row, and the number of all
  std::vector<float> phaseTaps_;      // the taps of phase 0, then those of phase 1, ...
  std::vector<const float*> rows_;
  std::vector<float> rowTaps_;
  AlignedArray<float> line_, phases_, padded_;
  int32_t ringSize_ = 0;
  AlignedArray<float> ring_;  // the latest small rows after the adjoint along their length: as wide as a large row
  int32_t widened_ = 0;       // small rows from 0 on that have gone into the ring
};

}  // namespace norv
