// Grey, RGB, CMYK and L*a*b* of 8 or 16 bits are read as they are, palettes and other kinds through the library's
// conversion to 8-bit RGB.
#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>

#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "kit/formats/tiff/device_colour.h"
#include "kit/formats/tiff/tiff.h"
#include "kit/formats/tiff/tiff_file.h"
#include "platform/memory.h"

namespace norv {
namespace {

// What the tags say about the pixels.
struct TiffLayout {
  uint32_t width, height;
  uint16_t bits, channels, photometric, planar, kind, extra = 0;
  bool tiled;
  std::optional<DevicePixels> device;  // inks or L*a*b*

  explicit TiffLayout(const TiffFile& file)
      : width(file.Tag<uint32_t>(TIFFTAG_IMAGEWIDTH, 0)),
        height(file.Tag<uint32_t>(TIFFTAG_IMAGELENGTH, 0)),
        bits(file.Tag<uint16_t>(TIFFTAG_BITSPERSAMPLE, 1)),
        channels(file.Tag<uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1)),
        photometric(file.Tag<uint16_t>(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_SEPARATED)),
        planar(file.Tag<uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG)),
        kind(file.Tag<uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT)),
        tiled(TIFFIsTiled(file.tiff)) {
    uint16_t count = 0;
    uint16_t* kinds = nullptr;
    if (TIFFGetField(file.tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds) && count > 0) extra = kinds[0];
    device = DevicePixelsOf(file);
  }
  int32_t Colours() const { return device ? device->Colours() : channels > 2 ? 3 : 1; }
  bool IsLab() const { return device && device->kind != DeviceColour::inks; }
  bool IsGrey() const { return photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE; }
  bool IsPlain() const {
    const bool colours = photometric == PHOTOMETRIC_RGB ? channels == 3 || channels == 4 : IsGrey() && channels <= 2;
    return (bits == 8 || bits == 16) && (colours || device) && kind == SAMPLEFORMAT_UINT && channels > 0;
  }
};

// Copies a block of `columns` x `rows` pixels, `count` channels of each from `channel` on, to its place; what reaches
// over the right and lower edge is left out. A block's rows are `columns` pixels long.
void PlaceBlock(Samples& samples, const uint8_t* block, uint32_t x, uint32_t y, uint32_t columns, uint32_t rows,
                int32_t channel, int32_t count) {
  const size_t sample = samples.bits / 8, pixel = sample * samples.channels, part = sample * count;
  const size_t stride = part * columns;
  columns = std::min(columns, samples.width - x);
  rows = std::min(rows, samples.height - y);
  for (uint32_t r = 0; r < rows; ++r) {
    uint8_t* target = samples.Row(static_cast<int32_t>(y + r)) + pixel * x + sample * channel;
    const uint8_t* source = block + stride * r;
    for (uint32_t c = 0; c < columns; ++c) std::memcpy(target + pixel * c, source + part * c, part);
  }
}

// One row of tiles, of which `first` is the picture's uppermost row.
void ReadTiles(TiffFile& file, Samples& band, uint32_t first, int32_t channel, int32_t count) {
  const uint32_t tileWidth = file.Tag<uint32_t>(TIFFTAG_TILEWIDTH, 0),
                 tileHeight = file.Tag<uint32_t>(TIFFTAG_TILELENGTH, 0);
  const tmsize_t size = TIFFTileSize(file.tiff);
  file.Require(size > 0 && tileWidth > 0 && tileHeight > 0);
  const size_t expected = size_t(tileWidth) * tileHeight * count * (band.bits / 8);
  if (static_cast<size_t>(size) != expected || expected > AvailableMemory()) Fail("TIFF: tiles of an unknown layout");
  Bytes tile(size);
  for (uint32_t x = 0; x < uint32_t(band.width); x += tileWidth) {
    file.Require(TIFFReadTile(file.tiff, tile.data(), x, first, 0, static_cast<uint16_t>(channel)) == size);
    PlaceBlock(band, tile.data(), x, 0, tileWidth, tileHeight, channel, count);
  }
}

void ReadRows(TiffFile& file, Samples& band, uint32_t first, int32_t channel, int32_t count) {
  const size_t size = size_t(band.width) * count * (band.bits / 8);
  if (static_cast<size_t>(TIFFScanlineSize(file.tiff)) != size) Fail("TIFF: rows of an unknown layout");
  Bytes row(size);
  for (uint32_t r = 0; r < uint32_t(band.height); ++r) {
    file.Require(TIFFReadScanline(file.tiff, row.data(), first + r, static_cast<uint16_t>(channel)) == 1);
    PlaceBlock(band, row.data(), 0, r, band.width, 1, channel, count);
  }
}

// Undoes what the file does to the first `colours` values of a pixel: white as 0, and colours multiplied by the alpha
// behind them.
template <typename T>
void PlainValues(Samples& samples, int32_t colours, bool whiteIsZero, bool multiplied) {
  constexpr uint32_t kMost = static_cast<T>(-1);
  T* values = reinterpret_cast<T*>(samples.bytes.data());
  const int32_t channels = samples.channels;
  const int64_t pixels = int64_t{samples.width} * samples.height;
  for (int64_t i = 0; i < pixels; ++i, values += channels)
    for (int32_t k = 0; k < colours; ++k) {
      if (whiteIsZero) values[k] = static_cast<T>(kMost - values[k]);
      const uint64_t alpha = multiplied ? values[colours] : kMost;
      if (alpha > 0 && alpha < kMost)
        values[k] = static_cast<T>(std::min<uint64_t>(kMost, (uint64_t{values[k]} * kMost + alpha / 2) / alpha));
    }
}

// Rows of a file whose samples are plain, from a band of them: a row of tiles, the strip of every separate plane, or
// just the next row.
class TiffReader {
 public:
  explicit TiffReader(const ByteSource& source) : file_(source, {}, "rm"), layout_(file_) {
    if (!layout_.IsPlain()) return;
    RequirePossible(layout_.width, layout_.height);
    shape = {static_cast<int32_t>(layout_.width), static_cast<int32_t>(layout_.height), layout_.channels, layout_.bits};
    if (layout_.device) {
      shape.channels = layout_.device->ShownChannels();
      converter_ = std::make_unique<DisplayConverter>(*layout_.device, ProfileOf(file_));
    }
    shape.turn = TurnOfOrientationTag(file_.Tag<uint16_t>(TIFFTAG_ORIENTATION, 1));
    separate_ = layout_.planar == PLANARCONFIG_SEPARATE && layout_.channels > 1;
    const uint32_t rows = layout_.tiled ? file_.Tag<uint32_t>(TIFFTAG_TILELENGTH, 0)
                          : separate_   ? file_.Tag<uint32_t>(TIFFTAG_ROWSPERSTRIP, 0)
                                        : 1;
    bandRows_ = static_cast<int32_t>(std::clamp<uint32_t>(rows, 1, layout_.height));
  }
  bool IsPlain() const { return layout_.IsPlain(); }
  Samples ReadConverted();

  void ReadRow(uint8_t* row) {
    const int32_t at = next_++ % bandRows_;
    if (at == 0) ReadBand(next_ - 1);
    if (converter_)
      converter_->ConvertRow(band_.Row(at), row, shape.width);
    else
      std::copy_n(band_.Row(at), band_.RowBytes(), row);
  }

  PictureShape shape;

 private:
  void ReadBand(int32_t first) {
    const int32_t rows = std::min(bandRows_, shape.height - first);
    if (band_.height != rows) band_ = Samples({shape.width, rows, layout_.channels, shape.bits});
    for (int32_t channel = 0; channel < (separate_ ? layout_.channels : 1); ++channel)
      (layout_.tiled ? ReadTiles : ReadRows)(file_, band_, first, channel, separate_ ? 1 : layout_.channels);
    const bool whiteIsZero = layout_.photometric == PHOTOMETRIC_MINISWHITE;
    const int32_t colours = layout_.Colours();
    const bool multiplied = layout_.extra == EXTRASAMPLE_ASSOCALPHA && colours < layout_.channels && !layout_.IsLab();
    if (whiteIsZero || multiplied)
      (layout_.bits == 8 ? PlainValues<uint8_t> : PlainValues<uint16_t>)(band_, colours, whiteIsZero, multiplied);
  }

  TiffFile file_;
  TiffLayout layout_;
  bool separate_ = false;
  int32_t bandRows_ = 1, next_ = 0;
  Samples band_;
  std::unique_ptr<DisplayConverter> converter_;  // of inks or L*a*b*
};

// The library's own way to colours, which takes the whole picture.
Samples TiffReader::ReadConverted() {
  char reason[1024];
  const TiffLayout& layout = layout_;
  if (!TIFFRGBAImageOK(file_.tiff, reason)) Fail("TIFF: %s", reason);
  if (layout.bits > 8 || layout.kind != SAMPLEFORMAT_UINT) Fail("TIFF: samples of %d bits of this kind", layout.bits);
  RequirePossible(layout.width, layout.height);
  Samples samples({static_cast<int32_t>(layout.width), static_cast<int32_t>(layout.height), layout.IsGrey() ? 1 : 3});
  const size_t count = size_t(layout.width) * layout.height;
  if (count * sizeof(uint32_t) > AvailableMemory()) Fail("TIFF: out of memory");
  std::vector<uint32_t> pixels(count);
  file_.Require(
      TIFFReadRGBAImageOriented(file_.tiff, layout.width, layout.height, pixels.data(), ORIENTATION_TOPLEFT, 1));
  uint8_t* target = samples.bytes.data();
  for (const uint32_t pixel : pixels)
    for (int32_t k = 0; k < samples.channels; ++k) *target++ = static_cast<uint8_t>(pixel >> (8 * k));
  return samples;
}

}  // namespace

SampleSource OpenTiff(const ByteSource& source, const ReadChoice&) {
  const auto reader = std::make_shared<TiffReader>(source);
  return reader->IsPlain() ? RowByRow(reader) : HeldSamples(reader->ReadConverted());
}

}  // namespace norv
