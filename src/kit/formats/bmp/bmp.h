// BMP: reader and writer.
#pragma once

#include "kit/formats/codec.h"

namespace norv {

// Palettes of 1, 4 and 8 bits, plain or as runs; 16, 24 and 32 bits a pixel.
SampleSource OpenBmp(const ByteSource& source);
// Grey with a palette, colours as 24 bits, with alpha as 32.
SampleSink CreateBmp(const ByteSink& sink, const PictureShape& shape);

}  // namespace norv
