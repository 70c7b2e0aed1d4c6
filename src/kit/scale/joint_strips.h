// Restorations in strips, each of which several ranks make together.
#pragma once

#include <functional>

#include "kit/pictures/picture.h"
#include "kit/pictures/picture_rows.h"
#include "raster/bands.h"
#include "restore/blocks/peers.h"

namespace norv {

// The cut of a picture that becomes `factor` times larger: strips of so many of its rows, each seen with a margin.
struct StripCut {
  int32_t height, factor, rows, margin;

  int32_t Strips() const { return (height + rows - 1) / rows; }
  Strip At(int32_t number) const { return PlanStrip(height, number * rows, rows, margin); }
};

// Restores this one's part of the strip, its own rows of the strip's enlarged window (RowRuns).
using MakePart = std::function<Picture(const Strip& strip, Peers& peers)>;

// The same rows, which ranks can make together, by neighbouring blocks: all ranks one strip after the other, or, where
// there are more ranks than blocks are worth, groups of them neighbouring strips.
PictureSource WithJointStrips(const PictureSource& alone, const StripCut& cut, MakePart make);

// Reads rows of a source from places that move down it and may overlap by some rows.
class PartReader {
 public:
  // overlap: rows at most.
  PartReader(PictureSource from, int32_t overlap) : from_(std::move(from)), overlap_(overlap) {}

  Picture Read(int32_t first, int32_t count);

 private:
  PictureSource from_;
  Picture kept_;  // the last rows read
  int32_t overlap_, next_ = 0;
};

}  // namespace norv
