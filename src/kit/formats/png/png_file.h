// PNG (ISO/IEC 15948) through libpng: what its reader and its writer offer to the format's row.
#pragma once

#include "kit/formats/byte_stream.h"
#include "kit/formats/encoding.h"
#include "kit/formats/samples.h"

namespace norv {

SampleSource OpenPng(const ByteSource& source, const ReadChoice& choice);
SampleSink CreatePng(const ByteSink& sink, const PictureShape& shape, const EncodingChoice& choice);

}  // namespace norv
