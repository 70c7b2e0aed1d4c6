// Images that pass by in groups of rows, so that nobody has to hold a whole one.
#pragma once

#include <cstdint>

#include "image/float_image.h"

namespace norv {

class RowSource {
 public:
  virtual ~RowSource() = default;

  int32_t width = 0, height = 0, format = kDefaultFormat;  // of the whole image

  // The next `rows` rows of every plane into rows at, at + 1, ... of an image of this width and model.
  virtual void Read(FloatImage& image, int32_t at, int32_t rows) = 0;
};

class RowSink {
 public:
  virtual ~RowSink() = default;

  // All rows of the image, which is used up, behind those written before. False: the destination has failed and wants
  // no more.
  virtual bool Write(FloatImage& image) = 0;
};

}  // namespace norv
