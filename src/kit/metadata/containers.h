// What a picture carries in and out of the formats' own wrapping. Reading looks for what it knows, leaves out what is
// damaged with a warning, and never throws for what a file says; bytes that a file does not have are never asked for.
#pragma once

#include <span>
#include <vector>

#include "kit/formats/byte_stream.h"
#include "kit/metadata/metadata.h"
#include "kit/metadata/tiff_fields.h"

namespace norv {

using SharedMetadata = std::shared_ptr<const Metadata>;

// A JPEG's segments before its first scan, and those that go behind JFIF's: marker and what follows the length.
struct JpegSegment {
  uint8_t marker;
  Bytes bytes;
};
SharedMetadata ReadJpegMetadata(const ByteSource& jpeg);
std::vector<JpegSegment> JpegSegments(const Metadata& metadata);

// JFIF's density: the unit's code and two whole numbers.
struct JpegDensity {
  uint8_t unit = 0;
  uint16_t x = 1, y = 1;
};
JpegDensity JpegDensityOf(const Metadata& metadata);

// A PNG's chunks, those behind the pixels too, and the whole chunks that go behind its header.
SharedMetadata ReadPngMetadata(const ByteSource& png);
Bytes PngChunks(const Metadata& metadata);

// The fields of a TIFF file's directory at this offset.
SharedMetadata ReadTiffMetadata(const ByteSource& tiff, int64_t directory);
// Whether a TIFF that carries these should have big-endian numbers: those of its EXIF, so that what only a camera's
// maker can read stays readable.
bool WantsBigEndian(const Metadata* metadata);
// The only directory of a TIFF file once more, with those fields that the metadata add to it and the directories below
// them, to stand at the offset `at`.
Bytes TiffDirectoryWith(const Metadata& metadata, const ByteSource& tiff, int64_t at);

// Takes a comment out of EXIF, where it stands for formats without texts, to be one for those that have them. It stays
// in EXIF too.
void TakeExifComment(Metadata& metadata);

// The resolution that the format said, else EXIF's.
std::optional<Resolution> ResolutionOf(const Metadata& metadata);

// No more bytes than this are carried of a kind.
size_t MostCarriedBytes();

}  // namespace norv
