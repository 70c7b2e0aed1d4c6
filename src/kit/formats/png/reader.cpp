#include <algorithm>
#include <cstring>

#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "kit/formats/png/png_file.h"
#include "kit/formats/png/session.h"
#include "kit/metadata/containers.h"

namespace norv {
namespace {

// Whether all colours of a palette are grey, and no profile says what they are as colours.
bool IsGreyPalette(png_structp png, png_infop info) {
  png_colorp colours = nullptr;
  int count = 0;
  if (!png_get_PLTE(png, info, &colours, &count) || png_get_color_type(png, info) != PNG_COLOR_TYPE_PALETTE)
    return false;
  if (png_get_valid(png, info, PNG_INFO_iCCP)) return false;
  return std::all_of(colours, colours + count,
                     [](const png_color& c) { return c.red == c.green && c.green == c.blue; });
}

// Of an animation, which says so before its pixels; the library passes over it.
int32_t FramesOf(const ByteSource& source) {
  uint8_t chunk[12];
  for (int64_t at = 8; source.read(at, chunk, sizeof chunk) == sizeof chunk; at += 12 + png_get_uint_32(chunk)) {
    if (std::memcmp(chunk + 4, "IDAT", 4) == 0) break;
    if (std::memcmp(chunk + 4, "acTL", 4) == 0)
      return static_cast<int32_t>(std::clamp<uint32_t>(png_get_uint_32(chunk + 8), 1, INT32_MAX));
  }
  return 1;
}

class PngReader {
 public:
  explicit PngReader(const ByteSource& source) : session_(source) {
    png_structp png = session_.png;
    png_infop info = session_.info;
    size_t rowBytes = 0;
    session_.Run([&] {
      png_read_info(png, info);
      rowBytes = png_get_rowbytes(png, info);
      png_set_expand(png);  // palettes to RGB, transparency to alpha, fewer than 8 bits to 8
      if (IsGreyPalette(png, info)) png_set_rgb_to_gray_fixed(png, PNG_ERROR_ACTION_NONE, -1, -1);
      png_set_swap(png);
      png_set_interlace_handling(png);
      png_read_update_info(png, info);
    });
    const uint32_t width = png_get_image_width(png, info), height = png_get_image_height(png, info);
    RequirePossible(width, height);
    shape = {static_cast<int32_t>(width), static_cast<int32_t>(height), png_get_channels(png, info),
             png_get_bit_depth(png, info)};
    // Deflate makes at most so much of a byte. What little a small file lacks is found out when it is read.
    constexpr size_t kMostOfByte = 1032, kSmall = 4096;
    if (rowBytes * height / kMostOfByte > static_cast<uint64_t>(source.size) + kSmall) Fail("PNG: the file ends early");
    shape.pages = FramesOf(source);
    shape.metadata = ReadPngMetadata(source);
    shape.turn = TurnOfOrientationTag(shape.metadata->orientation);
    if (png_get_rowbytes(png, info) != shape.RowBytes()) Fail("PNG: rows of an unknown layout");
  }
  bool IsInterlaced() const { return png_get_interlace_type(session_.png, session_.info) != PNG_INTERLACE_NONE; }

  void ReadRow(uint8_t* row) {
    session_.Run([&] {
      png_read_row(session_.png, row, nullptr);
      if (++next_ == shape.height) png_read_end(session_.png, nullptr);
    });
  }

  // Every row comes in several passes over the whole picture.
  Samples ReadInterlaced() {
    Samples samples(shape);
    std::vector<png_bytep> rows;
    rows.reserve(shape.height);
    for (int32_t r = 0; r < shape.height; ++r) rows.push_back(samples.Row(r));
    session_.Run([&] {
      png_read_image(session_.png, rows.data());
      png_read_end(session_.png, nullptr);
    });
    return samples;
  }

  PictureShape shape;

 private:
  PngSession session_;
  int32_t next_ = 0;
};

}  // namespace

SampleSource OpenPng(const ByteSource& source, const ReadChoice&) {
  const auto reader = std::make_shared<PngReader>(source);
  return reader->IsInterlaced() ? HeldSamples(reader->ReadInterlaced()) : RowByRow(reader);
}

}  // namespace norv
