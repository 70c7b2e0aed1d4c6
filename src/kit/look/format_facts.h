// How a picture stands in its file, read from the file's own headers. Whatever a file says is looked for only within
// its bytes; what is damaged is left out.
#pragma once

#include <string>

#include "kit/formats/byte_stream.h"
#include "kit/formats/picture_shape.h"
#include "kit/look/facts.h"

namespace norv {

struct StoredForm {
  std::string colour;  // model of the samples; empty: as they are handed on
  int32_t bits = 0;    // of a sample; 0: as they are handed on
  Facts facts;
};

// By the name of its format; of one that has nothing more to say an empty form. page: from 1 on.
StoredForm StoredFormOf(const std::string& format, const ByteSource& file, const PictureShape& shape, int32_t page);

// A file a format.
StoredForm PngForm(const ByteSource& file, const PictureShape& shape, int32_t page);
StoredForm JpegForm(const ByteSource& file, const PictureShape& shape, int32_t page);
StoredForm TiffFileForm(const ByteSource& file, const PictureShape& shape, int32_t page);
StoredForm WebpForm(const ByteSource& file, const PictureShape& shape, int32_t page);
StoredForm BmpForm(const ByteSource& file, const PictureShape& shape, int32_t page);
StoredForm NetpbmForm(const ByteSource& file, const PictureShape& shape, int32_t page);

}  // namespace norv
