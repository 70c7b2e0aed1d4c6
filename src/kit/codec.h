// Picture formats: bytes of a file to interleaved samples and back. One file a format, one row a format in the table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace norv {

using Bytes = std::vector<uint8_t>;

// Pixels row by row, the channels of a pixel side by side, samples of 8 bits or 16 in the machine's own byte order.
struct Samples {
  int32_t width = 0;
  int32_t height = 0;
  int32_t channels = 0;  // 1 grey, 2 grey and alpha, 3 RGB, 4 RGB and alpha (not multiplied into the colours)
  int32_t bits = 8;      // 8 or 16
  int32_t turn = 0;      // the orientation (raster/orient.h) that shows the picture upright
  Bytes bytes;

  size_t RowBytes() const { return size_t(width) * channels * (bits / 8); }
  uint8_t* Row(int32_t r) { return bytes.data() + RowBytes() * r; }
  const uint8_t* Row(int32_t r) const { return bytes.data() + RowBytes() * r; }

  // Room for the samples, all zero. Throws a Failure when a size is not positive, when there are more pixels than a
  // plane can hold, or when the samples and their planes would not fit into memory: before anything is allocated.
  void Allocate(int64_t newWidth, int64_t newHeight, int32_t newChannels, int32_t newBits);
};

struct EncodingChoice {
  int32_t quality = 95;  // of formats that lose something: 1 .. 100
};

struct Codec {
  const char* name;
  std::vector<std::string> extensions;  // lower case, without the point
  bool sixteenBits, alpha;              // what the format can hold
  bool (*recognise)(std::span<const uint8_t> start);
  Samples (*decode)(const Bytes& bytes);  // throws a Failure for a damaged or unknown file
  Bytes (*encode)(const Samples& samples, const EncodingChoice& choice);
};

// The format of these contents, or of a file so named; null for none of ours.
const Codec* CodecOfContents(std::span<const uint8_t> start);
const Codec* CodecOfName(const std::string& path);

// The names of all formats, for people.
std::string KnownFormats();

// The part of the name behind its last point in lower case; empty without one.
std::string ExtensionOf(const std::string& path);

// The orientation that undoes an EXIF or TIFF orientation tag of 1 .. 8 (JEITA CP-3451, 4.6.4); 0 for other values.
int32_t TurnOfOrientationTag(int32_t tag);

extern const Codec kPng, kJpeg, kTiff;
#ifdef NORV_WEBP
extern const Codec kWebp;
#endif

}  // namespace norv
