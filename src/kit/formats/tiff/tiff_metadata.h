// What a TIFF file's directories carry beside the pixels.
#pragma once

#include <memory>

#include "kit/formats/tiff/tiff_file.h"
#include "kit/metadata/metadata.h"

namespace norv {

// Of the directory that the file stands at.
Metadata MetadataOf(const TiffFile& file);

// Ends a file of one picture: its directory with what the metadata add to it, null for nothing. Fields are written as
// they came, since the library would turn fractions into others and knows none of a camera maker's.
void WriteLastDirectory(TiffFile& file, const Metadata* metadata);

}  // namespace norv
