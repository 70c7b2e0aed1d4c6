// What the tags of a TIFF say about its pixels.
#pragma once

#include <optional>
#include <vector>

#include "kit/formats/picture_shape.h"
#include "kit/formats/tiff/tiff_file.h"
#include "kit/profiles/display_converter.h"

namespace norv {

enum class ColourKind { grey, rgb, palette, device, other };
enum class SampleKind { unsignedInteger, signedInteger, floating };

struct TiffLayout {
  // Of the current directory. Throws a Failure for what cannot be read at all. A JPEG's colours are asked for as RGB.
  explicit TiffLayout(TiffFile& file);

  uint32_t width, height;
  uint16_t bits, channels, photometric, orientation;
  SampleKind kind = SampleKind::unsignedInteger;
  ColourKind colours = ColourKind::other;  // other: only the library knows how to make colours of it
  std::optional<DevicePixels> device;      // inks or L*a*b*, the samples of all 8 or 16 bits
  bool separate, tiled, whiteIsZero;
  int32_t alpha = -1;            // its channel; -1: none
  bool multiplied = false;       // the colours by alpha
  std::vector<uint8_t> palette;  // red, green, blue of every value that a sample can have
  bool greyPalette = false;

  // Of a pixel in the file, that belong to its colour.
  int32_t ColourChannels() const;
  // Of what is handed on: grey or RGB of 8, 16 or, where the file has more or floats, 32 bits.
  PictureShape Shape() const;
};

}  // namespace norv
