// Pictures that are made of pictures strip by strip, several strips at a time, in memory that does not grow with them.
#pragma once

#include <functional>

#include "kit/pictures/picture_rows.h"

namespace norv {

// Neighbouring rows of a picture.
struct RowRange {
  int32_t first = 0, rows = 0;

  int32_t End() const { return first + rows; }
};

// Strips have multiples of so many rows, and begin at multiples of the other number, which every whole factor of a
// network's enlargement divides.
inline constexpr int32_t kStripUnit = 32, kStripStep = 4;

// How rows are made. `needs` says of which rows of the source rows of the result are made; what begins further down
// needs nothing further up. `make` gets those, perhaps more, and gives the rows; it runs on any thread, several strips
// at a time, and what a strip becomes must not depend on where it begins and ends: then nothing shows of threads or
// strips.
struct StripWork {
  std::function<RowRange(RowRange made)> needs;
  std::function<Picture(Picture held, RowRange which, RowRange made)> make;
  int32_t rows = 0;  // of a strip; 0: as suits the caches
  // What else `make` is to have, from the thread that asks for rows: called strip by strip, in order, once the rows
  // that it needs were read; what it gives is called instead of `make`. Null: nothing.
  std::function<decltype(make)(RowRange made)> prepare = nullptr;
};

// The picture of that shape, made of the other one's rows as they are asked for. threads: 0 for as many as the process
// may use processors. Sources can be chained; each holds a few strips for every thread.
PictureSource InStrips(PictureSource from, const PictureShape& shape, StripWork work, int32_t threads);

// The same rows, each changed by itself: `change` gets some rows of the picture and keeps their number and width.
PictureSource ChangedRows(PictureSource from, const PictureShape& shape, std::function<Picture(Picture)> change,
                          int32_t threads);

}  // namespace norv
