// What the formats of the netpbm family share: a header of words, then samples from 0 to a largest value.
#pragma once

#include <span>
#include <string>

#include "kit/formats/byte_cursor.h"
#include "kit/formats/samples.h"

namespace norv {

// The mark "P5" and white space behind it.
bool StartsWithMark(std::span<const uint8_t> start, char mark);

class NetpbmHeader {
 public:
  // Behind the mark. name: of the format, for what is said about a file that cannot be read.
  NetpbmHeader(const ByteSource& source, const char* name);

  // The next word, comments left out; empty at the end. One byte of white space behind it is used up.
  std::string Word();
  // Throws a Failure for what is no number from 1 to `most`.
  int32_t Number(const char* what, int32_t most);
  [[noreturn]] void FailWith(const char* reason) const;
  // Throws a Failure where the file is too short for the rows.
  void RequireRows(int32_t height, int64_t rowBytes) const;

  ByteCursor cursor;

 private:
  int64_t size_;
  const char* name_;
};

// Samples in the file from 0 to `most`, two bytes each, high one first, above 255; unfolded to all of 8 or 16 bits.
class NetpbmScale {
 public:
  explicit NetpbmScale(int32_t most) : most_(static_cast<uint32_t>(most)) {}
  int32_t Bits() const { return most_ > 255 ? 16 : 8; }
  int32_t FileBytes() const { return most_ > 255 ? 2 : 1; }
  // False when a value is larger than the largest.
  bool Unfold(const uint8_t* source, size_t count, uint8_t* target) const;
  bool Put(uint32_t value, size_t at, uint8_t* target) const;

 private:
  uint32_t most_;
};

// The other way, of samples of all 8 or 16 bits.
void FoldSamples(const uint8_t* source, size_t count, int32_t bits, uint8_t* target);

// A text header, then rows, one behind another.
class NetpbmWriter {
 public:
  // sample: in the file, `channels` of them a pixel.
  NetpbmWriter(const ByteSink& sink, const std::string& header, const char* name);
  void Append(const void* bytes, size_t size);

 private:
  ByteSink sink_;
  const char* name_;
  int64_t position_ = 0;
};

}  // namespace norv
