// A picture as people have them: planes of display values.
#pragma once

#include <array>
#include <cstdint>

#include "kit/formats/picture_shape.h"
#include "linear/matrix2.h"

namespace norv {

// 1 to 4 planes of width x height floats on the 0..255 scale, whatever the precision of the file; a plane is a matrix
// with m = width and n = height.
struct Picture {
  int32_t channels = 0;  // 1 grey, 2 grey and alpha, 3 RGB, 4 RGB and alpha
  int32_t bits = 8;      // precision of the file that it came from: 8 or 16
  std::array<matrix, 4> plane;
  std::shared_ptr<const Metadata> metadata;  // null: none

  Picture() = default;
  // Contents undefined. Throws matrix's out-of-memory message.
  Picture(int32_t width, int32_t height, int32_t newChannels, int32_t newBits = 8);

  int32_t Width() const { return plane[0].m; }
  int32_t Height() const { return plane[0].n; }
  PictureShape Shape() const { return {Width(), Height(), channels, bits, 0, metadata}; }
  bool IsGrey() const { return Shape().IsGrey(); }
  bool HasAlpha() const { return Shape().HasAlpha(); }
  int32_t Colours() const { return IsGrey() ? 1 : 3; }
  // The alpha plane; only when there is one.
  matrix& Alpha() { return plane[channels - 1]; }
  const matrix& Alpha() const { return plane[channels - 1]; }
  // The plane that holds colour k = 0, 1, 2: of a grey picture always the one it has.
  const matrix& Colour(int32_t k) const { return plane[IsGrey() ? 0 : k]; }
};

// Copies `rows` rows of a picture, from row first on, into rows at, at + 1, ... of another of the same width and
// channels.
void CopyPart(const Picture& from, int32_t first, int32_t rows, Picture& to, int32_t at);

}  // namespace norv
