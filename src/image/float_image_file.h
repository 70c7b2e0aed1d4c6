// .fdib files in groups of rows. Planes stand one behind the other in the file, so that a group of rows is read and
// written at as many places as there are planes; a group of all rows is read and written from front to back.
#pragma once

#include <string>

#include "image/image_rows.h"
#include "platform/header.h"

namespace norv {

struct FloatImageHeader {
  int32_t width = 0, height = 0, format = kDefaultFormat;
  int32_t mask = 0;  // words of the mask; read, any but 0 means that there is one, whose length the sizes say

  // Of the format, 0 for one that is unknown.
  int32_t Planes() const;
  bool SizesPossible() const;
  bool Possible() const { return SizesPossible() && Planes() > 0; }
  // 32-bit words of the mask behind the planes, 0 without one. Possible sizes only.
  int64_t MaskWords() const;
  // Bytes from the file's start to row `row` of plane k; k = Planes(): to the mask.
  int64_t PlaceOf(int32_t k, int32_t row) const;
  // With an unknown format no plane counts. Possible sizes only.
  int64_t FileBytes() const;
};

template <typename File>
constexpr void Transfer(File& file, FloatImageHeader& header) {
  file.Field(header.width);
  file.Field(header.height);
  file.Field(header.format);
  file.Field(header.mask);
}

class FloatImageReader {
 public:
  int32_t width = 0, height = 0, format = kDefaultFormat;  // of the whole image

  // Reads the header. Width and height are 0 and the reason is on standard error when the file cannot be opened; a
  // file that is shorter than its header asks for is warned of at once, and so is an unknown format.
  explicit FloatImageReader(const std::string& path);

  bool IsOpen() const { return file_.IsOpen(); }
  // False for a pipe: then all rows have to be read as one group.
  bool CanSeek() const { return file_.CanSeek(); }
  int32_t Planes() const { return planes_; }
  // As the header's.
  int64_t MaskWords() const { return header_.MaskWords(); }

  // The next `rows` rows of every plane into rows at, at + 1, ... of an image of this width and model. What a short
  // file lacks reads as zeros.
  void Read(FloatImage& image, int32_t at, int32_t rows);
  // The next row to be read is this one.
  void SkipTo(int32_t row) { row_ = row; }
  // The same rows for those who take any source; the reader outlives it.
  ImageSource Rows();
  // The next n words of the mask, once the planes are read.
  void ReadMask(uint32_t* words, int64_t n);
  // Warns of a file that turned out to be shorter than it looked. Once everything is read.
  void WarnIfShort();

 private:
  FileIn file_;
  FloatImageHeader header_;
  int32_t planes_ = 0, row_ = 0;
  int64_t maskRead_ = 0;
  bool warned_ = false;
};

class FloatImageWriter {
 public:
  FloatImageWriter(const std::string& path, int32_t width, int32_t height, int32_t format, int64_t maskWords);

  bool CanSeek() const { return file_.CanSeek(); }
  bool Failed() const { return file_.Failed(); }
  // All rows of the image, below those written before. False once the file has failed. As many pixels a plane as the
  // image's height asks for, zeros where a plane has fewer.
  bool WriteRows(const FloatImage& image);
  // The next n words of the mask.
  void WriteMask(const uint32_t* words, int64_t n);
  // As FileOut::Commit().
  bool Commit() { return file_.Commit(); }

 private:
  FileOut file_;
  FloatImageHeader header_;
  int32_t planes_, row_ = 0;
  int64_t maskWritten_ = 0;
};

}  // namespace norv
