// Picture formats: rows of interleaved samples in and out of a file's bytes. One file a format, one row a format in the
// table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "kit/formats/bytes.h"

namespace norv {

// What a picture's samples are: of 8 bits or of 16 in the machine's own byte order, the channels of a pixel side by
// side.
struct SampleShape {
  int32_t width = 0;
  int32_t height = 0;
  int32_t channels = 0;  // 1 grey, 2 grey and alpha, 3 RGB, 4 RGB and alpha (not multiplied into the colours)
  int32_t bits = 8;      // 8 or 16
  int32_t turn = 0;      // the orientation (raster/orient.h) that shows the picture upright

  size_t PixelBytes() const { return size_t(channels) * (bits / 8); }
  size_t RowBytes() const { return width * PixelBytes(); }
  // Throws a Failure when a size is not positive or when there are more pixels than a plane can hold.
  void Require(int64_t newWidth, int64_t newHeight, int32_t newChannels, int32_t newBits);
};

// All rows of a picture, or some.
struct Samples : SampleShape {
  Bytes bytes;

  uint8_t* Row(int32_t r) { return bytes.data() + RowBytes() * r; }
  const uint8_t* Row(int32_t r) const { return bytes.data() + RowBytes() * r; }

  // Room for the samples, all zero. Throws a Failure as Require() does and when they do not fit into memory, before
  // anything is allocated.
  void Allocate(int64_t newWidth, int64_t newHeight, int32_t newChannels, int32_t newBits);
};

// Gives the rows of a picture from top to bottom.
class SampleReader {
 public:
  virtual ~SampleReader() = default;
  const SampleShape& Shape() const { return shape_; }
  // The next row. Throws a Failure for a damaged file, one that ends early included; with the last row, what stands
  // behind it has been looked at too.
  virtual void Read(uint8_t* row) = 0;

 protected:
  SampleShape shape_;
};

// Takes them.
class SampleWriter {
 public:
  virtual ~SampleWriter() = default;
  // The next row. Throws a Failure.
  virtual void Write(const uint8_t* row) = 0;
  // Once behind the last row.
  virtual void Finish() = 0;
};

struct EncodingChoice {
  int32_t quality = 95;  // of formats that lose something: 1 .. 100
};

struct Codec {
  const char* name;
  std::vector<std::string> extensions;  // lower case, without the point
  bool sixteenBits, alpha;              // what the format can hold
  bool (*recognise)(std::span<const uint8_t> start);
  // Both throw a Failure: for a damaged or unknown file, for a picture that the format cannot hold. What they read from
  // or write to outlives what they return.
  std::unique_ptr<SampleReader> (*open)(ByteSource& source);
  std::unique_ptr<SampleWriter> (*create)(ByteSink& sink, const SampleShape& shape, const EncodingChoice& choice);

  // Whole files in memory.
  Samples Decode(const Bytes& bytes) const;
  Bytes Encode(const Samples& samples, const EncodingChoice& choice) const;
};

// For formats whose rows do not come in order: all samples are held.
std::unique_ptr<SampleReader> ReadHeld(Samples samples);

Samples ReadAll(SampleReader& reader);

// The format of a file that starts so, or of a file so named; null for none of ours.
const Codec* CodecOfContents(std::span<const uint8_t> start);
const Codec* CodecOfName(const std::string& path);

// The names of all formats, for people.
std::string KnownFormats();

// The part of the name behind its last point in lower case; empty without one.
std::string ExtensionOf(const std::string& path);

// The orientation that undoes an EXIF or TIFF orientation tag of 1 .. 8 (JEITA CP-3451, 4.6.4); 0 for other values.
int32_t TurnOfOrientationTag(int32_t tag);

// The samples as the picture is seen upright, turn 0.
Samples Upright(const Samples& samples);

extern const Codec kPng, kJpeg, kTiff;
#ifdef NORV_WEBP
extern const Codec kWebp;
#endif

}  // namespace norv
