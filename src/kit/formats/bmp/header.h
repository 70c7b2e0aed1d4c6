// What stands before the pixels of a BMP.
#pragma once

#include <array>
#include <optional>
#include <span>

#include "kit/formats/byte_stream.h"
#include "kit/metadata/metadata.h"

namespace norv {

enum class BmpPacking { plain, runsOfBytes, runsOfNibbles };

struct BmpHeader {
  // Throws a Failure for what is no BMP, or one of a kind that is not read.
  explicit BmpHeader(const ByteSource& source);

  int32_t width = 0, height = 0;
  bool topDown = false;
  int32_t bits = 0;  // a pixel: 1, 4, 8, 16, 24 or 32
  BmpPacking packing = BmpPacking::plain;
  std::array<uint32_t, 4> masks = {};         // red, green, blue, alpha, of pixels of 16 or 32 bits; 0: not there
  std::array<uint8_t, 3 * 256> colours = {};  // red, green, blue of every palette entry; black where there is none
  bool greyPalette = false;                   // all entries are grey
  int64_t pixels = 0;                         // where the rows begin
  std::optional<Resolution> resolution;

  bool HasPalette() const { return bits <= 8; }
  // Of a row in the file, with what fills it up to whole words.
  int64_t Stride() const { return (int64_t{width} * bits + 31) / 32 * 4; }

 private:
  void ReadSizes(std::span<const uint8_t> info);
  void ReadPacking(uint32_t compression, std::span<const uint8_t> info);
  void ReadPalette(const ByteSource& source, int64_t position, int32_t entryBytes, uint32_t used);
};

// By the sizes and counts that the header claims too: two letters alone could begin anything.
bool IsBmp(std::span<const uint8_t> start);

}  // namespace norv
