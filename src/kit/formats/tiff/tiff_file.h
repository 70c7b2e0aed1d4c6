// The handle of libtiff on bytes to read from or to write to.
#pragma once

#include <cstdint>
#include <tiffio.h>

#include "kit/formats/byte_stream.h"

namespace norv {

// On a source or a sink.
struct TiffFile {
  ByteSource source;  // without a function: being written
  ByteSink sink;
  int64_t position = 0;
  int64_t written = 0;  // size of what is written
  char failure[200] = "not a readable file";
  TIFF* tiff = nullptr;

  // mode: as the library's own, "r" for a source. Throws a Failure for what it cannot open.
  TiffFile(const ByteSource& from, const ByteSink& to, const char* mode);
  ~TiffFile();
  TiffFile(const TiffFile&) = delete;
  TiffFile& operator=(const TiffFile&) = delete;

  // Throws a Failure with the library's last reason.
  void Require(bool fine) const;
  // The tag's value, or its default, or what is given here.
  template <typename T>
  T Tag(uint32_t tag, T otherwise) const {
    T value = otherwise;
    TIFFGetFieldDefaulted(tiff, tag, &value);
    return value;
  }
  template <typename T>
  void Set(uint32_t tag, T value) {
    Require(TIFFSetField(tiff, tag, value));
  }
};

}  // namespace norv
