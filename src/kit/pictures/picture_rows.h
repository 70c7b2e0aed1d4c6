// Pictures that pass by in groups of rows. What hands them on needs not know what a picture is (picture.h).
#pragma once

#include "image/row_stream.h"
#include "kit/formats/picture_shape.h"

namespace norv {

struct Picture;

// Reading throws a Failure that names the file. Writing throws a Failure, or a SaidFailure as soon as it is known that
// the file cannot be written; a file is replaced as a whole at the end, and its finish() says how many samples were
// outside 0..255 by more than rounding and had to be moved.
using PictureSource = RowSource<PictureShape, Picture>;
using PictureSink = RowSink<Picture, int64_t>;

// All rows; a Failure when they do not fit into memory.
Picture AllRows(const PictureSource& source);
// The rows of one after another, with progress where it says what is done; returns what the sink's finish() returns.
int64_t CopyRows(PictureSource from, const PictureSink& to, const char* doing = nullptr);
// Rows `first` to `end` in groups, with progress where it says what is done; `take` gets the number of a group's first.
void PassRows(PictureSource& from, int64_t first, int64_t end,
              const std::function<void(Picture rows, int64_t first)>& take, const char* doing = nullptr);
// From a picture that is in memory already.
PictureSource HeldPicture(Picture picture);

}  // namespace norv
