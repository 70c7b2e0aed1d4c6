// EXIF blocks (JEITA CP-3451): read, put right in place, and made from the directories of a TIFF file.
#pragma once

#include <optional>
#include <span>

#include "kit/metadata/metadata.h"
#include "kit/metadata/tiff_fields.h"

namespace norv {

// Whether the bytes begin as a block does. The rest of a block may still be damaged.
bool IsExif(std::span<const uint8_t> bytes);

// A tag of 1 .. 8 from what a field says; 0 for anything else.
int32_t OrientationOf(double number);
// The tag of its first directory; 0 without one.
int32_t ExifOrientation(std::span<const uint8_t> exif);
std::optional<Resolution> ExifResolution(std::span<const uint8_t> exif);

// The comment that it has for programs, UTF-8; empty without one.
std::string ExifComment(std::span<const uint8_t> exif);

// Says in place what is true of a picture of this size that is stored upright: sizes where there are any, orientation
// 1. The thumbnail, which shows another picture, goes. Nothing else moves, so that offsets in a maker's own format stay
// valid. A block in which that cannot be is damaged: it becomes empty, with a warning.
void PutExifRight(Bytes& exif, int32_t width, int32_t height);

// Adds those fields that the first directory lacks, in the block's byte order as `make` gives them; an empty block
// becomes one. What stands in it stays at its place.
void AddToExif(Bytes& exif, const std::function<TiffFields(bool bigEndian)>& make);

// The directories that EXIF and TIFF share, without what says how pixels are stored.
struct ExifTree {
  bool bigEndian = false;
  TiffFields image, exif, gps, interop;
  bool damaged = false;  // something could not be read
};

// From the directory at this offset of a block or a file.
ExifTree ReadExifTree(const TiffStructure& structure, int64_t directory);

// The directories with the pointers between them, the first one at the offset `at`.
Bytes TreeBytes(ExifTree tree, uint64_t at, bool wide);

// A block of its own; empty for a tree without fields.
Bytes ExifBlock(const ExifTree& tree);

// The fields of 282, 283 and 296.
TiffFields ResolutionFields(const Resolution& resolution, bool bigEndian);

}  // namespace norv
