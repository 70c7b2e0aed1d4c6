// TIFF through libtiff: reader and writer.
#pragma once

#include <optional>

#include "kit/formats/byte_stream.h"
#include "kit/formats/codec.h"
#include "kit/formats/encoding.h"
#include "kit/formats/samples.h"

namespace norv {

SampleSource OpenTiff(const ByteSource& source, const ReadChoice& choice);
std::optional<RowPlaces> PlacesInTiff(const PictureShape& shape, const EncodingChoice& choice);
SampleSink CreateTiff(const ByteSink& sink, const PictureShape& shape, const EncodingChoice& choice);

}  // namespace norv
