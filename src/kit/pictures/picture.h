// A picture as people have them: planes of display values, in and out of picture files.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "kit/formats/codec.h"
#include "linear/matrix2.h"

namespace norv {

struct PictureShape;

// 1 to 4 planes of width x height floats on the 0..255 scale, whatever the precision of the file; a plane is a matrix
// with m = width and n = height.
struct Picture {
  int32_t channels = 0;  // 1 grey, 2 grey and alpha, 3 RGB, 4 RGB and alpha
  int32_t bits = 8;      // precision of the file that it came from: 8 or 16
  std::array<matrix, 4> plane;

  Picture() = default;
  // Contents undefined.
  Picture(int32_t width, int32_t height, int32_t newChannels);

  int32_t Width() const { return plane[0].m; }
  int32_t Height() const { return plane[0].n; }
  bool IsGrey() const { return channels <= 2; }
  bool HasAlpha() const { return channels == 2 || channels == 4; }
  int32_t Colours() const { return IsGrey() ? 1 : 3; }
  // The alpha plane; only when there is one.
  matrix& Alpha() { return plane[channels - 1]; }
  const matrix& Alpha() const { return plane[channels - 1]; }
  PictureShape Shape() const;
  // The plane that holds colour k = 0, 1, 2: of a grey picture always the one it has.
  const matrix& Colour(int32_t k) const { return plane[IsGrey() ? 0 : k]; }
};

// What is known of a picture before its pixels.
struct PictureShape {
  int32_t width = 0, height = 0;
  int32_t channels = 0, bits = 8;  // as in Picture
};

// A picture that comes in groups of rows from the top, so that nobody has to hold a whole one.
class PictureReader {
 public:
  virtual ~PictureReader() = default;
  const PictureShape& Shape() const { return shape_; }
  // The next `rows` rows into rows at, at + 1, ... of a picture of this width and these channels. Throws a Failure that
  // names the file.
  virtual void Read(Picture& part, int32_t at, int32_t rows) = 0;

 protected:
  PictureShape shape_;
};

// One that goes the same way into a file, which is replaced as a whole.
class PictureWriter {
 public:
  virtual ~PictureWriter() = default;
  // All rows of the part behind those written before. Throws a Failure, or a SaidFailure as soon as it is known that
  // the file cannot be written.
  virtual void Write(Picture part) = 0;
  // Behind the last row: returns how many samples were outside 0..255 by more than rounding and had to be moved.
  virtual int64_t Finish() = 0;
};

// All rows; a Failure when they do not fit into memory.
Picture ReadAll(PictureReader& reader);
// The rows of one after another; returns what Finish() returns.
int64_t CopyRows(PictureReader& from, PictureWriter& to);
// A picture that is in memory already.
std::unique_ptr<PictureReader> ReadHeld(Picture picture);

// From a file's contents, whatever its name, upright as its orientation tag says. 16-bit samples keep their precision
// (value / 257). Row by row; what the format gives as a whole only (interlaced PNG, WebP, odd kinds of TIFF) and what
// has to be turned is held as samples. Throws a Failure that names the file.
std::unique_ptr<PictureReader> OpenPicture(const std::string& path);
Picture ReadPicture(const std::string& path);

struct WriteChoice {
  int32_t bits = 0;  // 8 or 16; 0: the picture's own precision as far as the format can hold it
  EncodingChoice encoding;
};

// To the format that the name asks for, the file replaced as a whole: rounded to nearest, values outside 0..255 moved
// to the nearest end. A format without alpha drops it with a warning. Returns how many samples were outside by more
// than rounding. Throws a Failure for a name or precision that there is no format for.
std::unique_ptr<PictureWriter> CreatePicture(const std::string& path, const PictureShape& shape,
                                             const WriteChoice& choice);
int64_t WritePicture(const std::string& path, const Picture& picture, const WriteChoice& choice);

// Both ways between planes and samples; ToSamples takes 8 or 16 bits and counts what it moved inside.
Picture ToPicture(const Samples& samples);
Samples ToSamples(const Picture& picture, int32_t bits, int64_t& moved);

}  // namespace norv
