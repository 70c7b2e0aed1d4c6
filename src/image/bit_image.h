// The image of three bytes a pixel and its .bit file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/folder.h"
#include "platform/header.h"
#include "platform/memory.h"

namespace norv {

// Bytes in a row of `width` pixels: three a pixel, padded to a multiple of four.
constexpr int64_t BitStride(int64_t width) { return (3 * width + 3) & ~int64_t{3}; }

// width x height pixels, row k at byte k * BitStride(width) of the store, row 0 first. A pixel's bytes are its third,
// second and first colour value. The padding bytes belong to no pixel but travel with copies and files.
class BitImage {
 public:
  int32_t width = 0;
  int32_t height = 0;
  int32_t count = 0;            // width * height
  AlignedArray<uint8_t*> rows;  // one pointer a row
  int32_t size = 0;             // bytes in the store
  AlignedArray<uint8_t> pixels;

  BitImage() = default;
  // As Redim.
  BitImage(int32_t newWidth, int32_t newHeight) { Redim(newWidth, newHeight); }
  BitImage(const BitImage& other);
  BitImage(BitImage&& other) noexcept { swap(other); }
  BitImage& operator=(BitImage other) noexcept {
    swap(other);
    return *this;
  }
  void swap(BitImage& other) noexcept;

  // Pixels undefined, padding 0; nothing is allocated when there is no pixel. A negative size, one of more than
  // 2^31 - 1 bytes or one that memory cannot hold throws an out-of-memory message (const char*); the image is then
  // empty.
  void Redim(int32_t newWidth, int32_t newHeight);

  // .bit files: width, height, then the store with its padding. Throw "PROBLEM OPENING FILE FOR WRITING!" when the file
  // cannot be opened or written, with the reason on standard error; a short file's tail reads as zeros, with a warning.
  BitImage& Load(const std::string& name, Folder folder);
  const BitImage& Save(const std::string& name, Folder folder) const;
};

// The start of a .bit file: the store follows.
struct BitImageHeader {
  int32_t width = 0, height = 0;

  // Not negative, and a store of at most 2^31 - 1 bytes.
  bool Possible() const;
  int64_t FileBytes() const;
};

template <typename File>
constexpr void Transfer(File& file, BitImageHeader& header) {
  file.Field(header.width);
  file.Field(header.height);
}

}  // namespace norv
