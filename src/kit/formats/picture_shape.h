// What is known of a picture before its pixels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace norv {

struct Metadata;

struct PictureShape {
  int32_t width = 0, height = 0;  // pixels
  int32_t channels = 0;           // 1 grey, 2 grey and alpha, 3 RGB, 4 RGB and alpha (not multiplied into the colours)
  int32_t bits = 8;               // of a sample in the file: 8, 16, or 32 for floats
  int32_t turn = 0;               // the orientation (raster/orient.h) that shows the picture upright
  std::shared_ptr<const Metadata> metadata = nullptr;  // null: none
  int32_t jpegQuality = 0;                             // 1 .. 100 of a JPEG file's tables; 0: of another file
  int32_t pages = 1;                                   // pictures that its file holds, frames of an animation too

  bool IsGrey() const { return channels <= 2; }
  bool HasAlpha() const { return channels == 2 || channels == 4; }
  // Bytes of a pixel and of a row of samples.
  size_t PixelBytes() const { return size_t(channels) * (bits / 8); }
  size_t RowBytes() const { return width * PixelBytes(); }
};

}  // namespace norv
