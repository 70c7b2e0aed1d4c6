// Strips of a PNG's rows, each filtered and compressed by itself, so that many can be at a time: one behind the other
// they are the one deflate stream that the format asks for (RFC 1951).
#pragma once

#include <cstdint>

#include "kit/formats/bytes.h"
#include "kit/formats/png/row_filters.h"

namespace norv {

struct PngStrip {
  // Rows as the file has them, most significant byte first, behind kRowMargin zeros each: first `before` rows that are
  // above the strip, which the filters and the matches refer to, then the strip's. The picture's first row is below one
  // of zeros.
  Bytes rows;
  int64_t before = 0;
  size_t rowBytes = 0;
  int32_t pixelBytes = 0;
  bool last = false;  // of the picture

  size_t Stride() const { return kRowMargin + rowBytes; }
};

struct CompressedStrip {
  Bytes bytes;
  uint32_t adler = 1;  // Adler-32 of what was compressed,
  int64_t length = 0;  // and its length
};

// A picture's way of being cut and compressed; never a matter of threads.
class StripCompressor {
 public:
  // compression, 0 to 9: 0 stores. Up to 5 a look at a part of the strip decides between runs alone, which in
  // photographs is as good and takes a quarter of the time, and matches as zlib's level of that number finds them; 1
  // has runs alone. From 6 on the shorter of both is taken, and 9 tries all filters as well.
  StripCompressor(int32_t compression, size_t rowBytes);

  int64_t Rows() const;    // of a strip
  int64_t Before() const;  // rows above it, at most
  // On any thread. Throws std::bad_alloc.
  CompressedStrip Compress(const PngStrip& strip) const;

 private:
  int32_t compression_;
  size_t rowBytes_;
};

}  // namespace norv
