// The samples of a picture as its file has them, whole or in groups of rows.
#pragma once

#include <cstdint>

#include "image/row_stream.h"
#include "kit/formats/bytes.h"
#include "kit/formats/picture_shape.h"

namespace norv {

// Throws a Failure when a side is not positive or when there are more pixels than a plane can hold.
void RequirePossible(int64_t width, int64_t height);

// A header may claim what it likes. What a file of so many bytes may be unfolded to: 64 MB and 4,096 times its size,
// which no compression of a real picture comes near.
int64_t MostLikelyBytes(int64_t fileBytes);
// Throws a Failure where so many bytes do not fit into memory.
void RequireMemory(int64_t bytes);
// Throws a Failure where the bytes, or the samples of such a picture, would be more.
void RequireLikely(int64_t bytes, int64_t fileBytes);
void RequireLikely(const PictureShape& shape, int64_t fileBytes);

// Rows of samples of 8 bits, or of 16 in the machine's own byte order, or of floats where 0 to 1 is black to white, the
// channels of a pixel side by side.
struct Samples : PictureShape {
  Bytes bytes;

  Samples() = default;
  // Room for the rows of this shape, all zero. Throws a Failure for a shape that cannot be, and for one that does not
  // fit into memory, before anything is allocated.
  explicit Samples(const PictureShape& shape);

  uint8_t* Row(int32_t r) { return bytes.data() + RowBytes() * r; }
  const uint8_t* Row(int32_t r) const { return bytes.data() + RowBytes() * r; }
};

// Reading throws a Failure for a damaged file, one that ends early included; with the last row, what stands behind it
// has been looked at too. Writing throws a Failure.
using SampleSource = RowSource<PictureShape, Samples>;
using SampleSink = RowSink<const Samples&>;

// From samples that are held, for formats whose rows do not come in order.
SampleSource HeldSamples(Samples samples);
// All rows; a Failure when they do not fit into memory.
Samples AllSamples(const SampleSource& source);

// The samples as the picture is seen upright, turn 0.
Samples Upright(const Samples& samples);

// The orientation that undoes an EXIF or TIFF orientation tag of 1 .. 8 (JEITA CP-3451, 4.6.4); 0 for other values.
int32_t TurnOfOrientationTag(int32_t tag);

}  // namespace norv
