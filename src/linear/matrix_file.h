// The matrix's file (.mat): three header fields, then the elements column by column.
#pragma once

#include "platform/header.h"

namespace norv {

struct MatrixHeader {
  int32_t rows = 0, columns = 0;  // m and n; of an image plane its width and height
  int32_t elements = 0;           // rows * columns; never believed when it was read

  bool Possible() const;
  int64_t FileBytes() const;
};

template <typename File>
constexpr void Transfer(File& file, MatrixHeader& header) {
  file.Field(header.rows);
  file.Field(header.columns);
  file.Field(header.elements);
}

}  // namespace norv
