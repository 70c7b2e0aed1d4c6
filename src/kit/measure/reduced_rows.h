// A picture reduced while it passes by from the top, and the rows of another one kept for as long as they are needed.
#pragma once

#include <array>
#include <deque>

#include "kit/pictures/picture.h"
#include "kit/scale/wanted_size.h"
#include "raster/filters.h"
#include "raster/separable.h"

namespace norv {

// The taps by which an axis of `from` pixels becomes one of `to`: the filter's where it is a whole number of times as
// long (as ShrinkMatrix places them), else cubic convolution with a = -1/2, stretched. Outside pixels are mirrored.
ResampleTable ReductionTable(int32_t from, int32_t to, const FilterChoice& filter);

// One picture on its way. Single precision, along rows first.
class ReducedRows {
 public:
  // to: no side longer than that of `from`.
  ReducedRows(const PictureSize& from, const PictureSize& to, const FilterChoice& filter);

  // The next rows of the picture; returns those of the reduced one that end with them, without pixels where none does.
  Picture Take(const Picture& rows);
  // Reduced rows that were returned.
  int32_t Made() const { return made_; }

 private:
  void Append(const Picture& rows);

  ResampleTable across_, down_;
  int32_t height_;                 // of the picture
  Picture held_;                   // rows reduced along their length, of which later ones are made
  int32_t first_ = 0, taken_ = 0;  // the picture's row that held_ begins with, and that is taken next
  int32_t made_ = 0;
};

class KeptRows {
 public:
  void Append(Picture rows);
  // Rows first, first + 1, ..., which have come and were not forgotten.
  Picture Rows(int32_t first, int32_t count) const;
  void ForgetBefore(int32_t row);

 private:
  struct Group {
    int32_t first;
    Picture rows;
    int32_t End() const { return first + rows.Height(); }
  };
  std::deque<Group> groups_;
  int32_t next_ = 0;
};

}  // namespace norv
