// All that a picture's file carries beside its pixels.
#pragma once

#include <string>

#include "kit/formats/encoding.h"
#include "kit/formats/picture_shape.h"
#include "kit/look/facts.h"

namespace norv {

struct Metadata;

// Orientation, resolution, colours, EXIF, texts; of XMP, IPTC and what only programs understand the sizes.
Facts MetadataFacts(const Metadata& metadata);

// Format, size, samples and how they are stored, then the metadata.
// shape: as the picture was opened from that file, upright. Throws a Failure when the file cannot be read.
Facts PictureFacts(const std::string& path, const PictureShape& shape, const ReadChoice& choice);

}  // namespace norv
