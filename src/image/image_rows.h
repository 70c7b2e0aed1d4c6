// Float images that pass by in groups of rows.
#pragma once

#include "image/float_image.h"
#include "image/row_stream.h"

namespace norv {

struct ImageShape {
  int32_t width = 0, height = 0;  // pixels
  int32_t format = kDefaultFormat;
};

using ImageSource = RowSource<ImageShape, FloatImage>;

// Takes all rows of the image, which is used up, below those taken before. False: no more are wanted.
using TakeRows = std::function<bool(FloatImage& rows)>;

}  // namespace norv
