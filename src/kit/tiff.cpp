// TIFF through libtiff, in memory. Grey and RGB of 8 or 16 bits are read as they are, palettes and other kinds through
// the library's conversion to 8-bit RGB.
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <tiffio.h>

#include "kit/codec.h"
#include "kit/failure.h"
#include "platform/memory.h"

namespace norv {
namespace {

// A file in memory and the library's handle on it.
struct TiffFile {
  Bytes bytes;          // of a file that is written
  const Bytes* source;  // of one that is read
  uint64_t position = 0;
  char failure[200] = "not a readable file";
  TIFF* tiff = nullptr;

  explicit TiffFile(const Bytes* read) : source(read ? read : &bytes) {
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    if (!options) Fail("TIFF: out of memory");
    TIFFOpenOptionsSetErrorHandlerExtR(options, OnError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, OnWarning, this);
    const size_t most = std::min<size_t>(AvailableMemory(), size_t{1} << 40);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, static_cast<tmsize_t>(most));
    tiff = TIFFClientOpenExt("picture", read ? "rm" : "wm", this, Read, Write, Seek, Close, Size, Map, Unmap, options);
    TIFFOpenOptionsFree(options);
    if (!tiff) Fail("TIFF: %s", failure);
  }
  ~TiffFile() {
    if (tiff) TIFFClose(tiff);
  }
  TiffFile(const TiffFile&) = delete;
  TiffFile& operator=(const TiffFile&) = delete;

  void Require(bool fine) const {
    if (!fine) Fail("TIFF: %s", failure);
  }
  template <typename T>
  T Tag(uint32_t tag, T otherwise) const {
    T value = otherwise;
    TIFFGetFieldDefaulted(tiff, tag, &value);
    return value;
  }

 private:
  static int OnError(TIFF*, void* self, const char*, const char* format, va_list arguments) {
    std::vsnprintf(static_cast<TiffFile*>(self)->failure, sizeof failure, format, arguments);
    return 1;
  }
  static int OnWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }
  static tmsize_t Read(thandle_t handle, void* target, tmsize_t size) {
    TiffFile& self = *static_cast<TiffFile*>(handle);
    if (self.position >= self.source->size()) return 0;
    size = std::min<tmsize_t>(size, static_cast<tmsize_t>(self.source->size() - self.position));
    std::memcpy(target, self.source->data() + self.position, size);
    self.position += size;
    return size;
  }
  static tmsize_t Write(thandle_t handle, void* bytes, tmsize_t size) {
    TiffFile& self = *static_cast<TiffFile*>(handle);
    try {
      if (self.position + size > self.bytes.size()) self.bytes.resize(self.position + size);
    } catch (const std::exception&) {
      return -1;
    }
    std::memcpy(self.bytes.data() + self.position, bytes, size);
    self.position += size;
    return size;
  }
  static toff_t Seek(thandle_t handle, toff_t offset, int whence) {
    TiffFile& self = *static_cast<TiffFile*>(handle);
    const uint64_t origin = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? self.position : self.source->size();
    return self.position = origin + offset;
  }
  static int Close(thandle_t) { return 0; }
  static toff_t Size(thandle_t handle) { return static_cast<TiffFile*>(handle)->source->size(); }
  static int Map(thandle_t, void**, toff_t*) { return 0; }
  static void Unmap(thandle_t, void*, toff_t) {}
};

bool IsTiff(std::span<const uint8_t> start) {
  if (start.size() < 4) return false;
  const auto is = [&](const char* mark) { return std::memcmp(start.data(), mark, 4) == 0; };
  return is("II*\0") || is("MM\0*") || is("II+\0") || is("MM\0+");
}

// What the tags say about the pixels.
struct TiffLayout {
  uint32_t width, height;
  uint16_t bits, channels, photometric, planar, kind, extra = 0;
  bool tiled;

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
  }
  bool IsGrey() const { return photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE; }
  bool IsPlain() const {
    const bool colours = photometric == PHOTOMETRIC_RGB ? channels == 3 || channels == 4 : IsGrey() && channels <= 2;
    return (bits == 8 || bits == 16) && colours && kind == SAMPLEFORMAT_UINT && channels > 0;
  }
};

// Copies a block of `columns` x `rows` pixels, `count` channels of each from `channel` on, to its place; what reaches
// over the right and lower edge is left out. A block's rows are `stride` pixels apart.
void PlaceBlock(Samples& samples, const uint8_t* block, uint32_t x, uint32_t y, uint32_t columns, uint32_t rows,
                uint32_t stride, int32_t channel, int32_t count) {
  const size_t sample = samples.bits / 8, pixel = sample * samples.channels, part = sample * count;
  columns = std::min(columns, samples.width - x);
  rows = std::min(rows, samples.height - y);
  for (uint32_t r = 0; r < rows; ++r) {
    uint8_t* target = samples.Row(static_cast<int32_t>(y + r)) + pixel * x + sample * channel;
    const uint8_t* source = block + part * stride * r;
    for (uint32_t c = 0; c < columns; ++c) std::memcpy(target + pixel * c, source + part * c, part);
  }
}

void ReadTiles(TiffFile& file, Samples& samples, int32_t channel, int32_t count) {
  const uint32_t tileWidth = file.Tag<uint32_t>(TIFFTAG_TILEWIDTH, 0),
                 tileHeight = file.Tag<uint32_t>(TIFFTAG_TILELENGTH, 0);
  const tmsize_t size = TIFFTileSize(file.tiff);
  file.Require(size > 0 && tileWidth > 0 && tileHeight > 0);
  const size_t expected = size_t(tileWidth) * tileHeight * count * (samples.bits / 8);
  if (static_cast<size_t>(size) != expected || expected > AvailableMemory()) Fail("TIFF: tiles of an unknown layout");
  Bytes tile(size);
  for (uint32_t y = 0; y < uint32_t(samples.height); y += tileHeight)
    for (uint32_t x = 0; x < uint32_t(samples.width); x += tileWidth) {
      file.Require(TIFFReadTile(file.tiff, tile.data(), x, y, 0, static_cast<uint16_t>(channel)) == size);
      PlaceBlock(samples, tile.data(), x, y, tileWidth, tileHeight, tileWidth, channel, count);
    }
}

void ReadRows(TiffFile& file, Samples& samples, int32_t channel, int32_t count) {
  const size_t size = size_t(samples.width) * count * (samples.bits / 8);
  if (static_cast<size_t>(TIFFScanlineSize(file.tiff)) != size) Fail("TIFF: rows of an unknown layout");
  Bytes row(size);
  for (uint32_t y = 0; y < uint32_t(samples.height); ++y) {
    file.Require(TIFFReadScanline(file.tiff, row.data(), y, static_cast<uint16_t>(channel)) == 1);
    PlaceBlock(samples, row.data(), 0, y, samples.width, 1, samples.width, channel, count);
  }
}

// Undoes what the file does to the values: white as 0, and colours multiplied by alpha.
template <typename T>
void PlainValues(Samples& samples, bool whiteIsZero, bool multiplied) {
  constexpr uint32_t kMost = static_cast<T>(-1);
  T* values = reinterpret_cast<T*>(samples.bytes.data());
  const int32_t channels = samples.channels, colours = channels == 2 || channels == 4 ? channels - 1 : channels;
  const int64_t pixels = int64_t{samples.width} * samples.height;
  for (int64_t i = 0; i < pixels; ++i, values += channels)
    for (int32_t k = 0; k < colours; ++k) {
      if (whiteIsZero) values[k] = static_cast<T>(kMost - values[k]);
      const uint64_t alpha = multiplied ? values[channels - 1] : kMost;
      if (alpha > 0 && alpha < kMost)
        values[k] = static_cast<T>(std::min<uint64_t>(kMost, (uint64_t{values[k]} * kMost + alpha / 2) / alpha));
    }
}

void ReadPlain(TiffFile& file, const TiffLayout& layout, Samples& samples) {
  samples.Allocate(layout.width, layout.height, layout.channels, layout.bits);
  const bool separate = layout.planar == PLANARCONFIG_SEPARATE && layout.channels > 1;
  for (int32_t channel = 0; channel < (separate ? layout.channels : 1); ++channel)
    (layout.tiled ? ReadTiles : ReadRows)(file, samples, channel, separate ? 1 : layout.channels);
  const bool whiteIsZero = layout.photometric == PHOTOMETRIC_MINISWHITE;
  const bool multiplied = layout.extra == EXTRASAMPLE_ASSOCALPHA && layout.channels % 2 == 0;
  if (whiteIsZero || multiplied)
    (layout.bits == 8 ? PlainValues<uint8_t> : PlainValues<uint16_t>)(samples, whiteIsZero, multiplied);
}

void ReadConverted(TiffFile& file, const TiffLayout& layout, Samples& samples) {
  char reason[1024];
  if (!TIFFRGBAImageOK(file.tiff, reason)) Fail("TIFF: %s", reason);
  if (layout.bits > 8 || layout.kind != SAMPLEFORMAT_UINT) Fail("TIFF: samples of %d bits of this kind", layout.bits);
  samples.Allocate(layout.width, layout.height, layout.IsGrey() ? 1 : 3, 8);
  std::vector<uint32_t> pixels(size_t(layout.width) * layout.height);
  file.Require(
      TIFFReadRGBAImageOriented(file.tiff, layout.width, layout.height, pixels.data(), ORIENTATION_TOPLEFT, 1));
  uint8_t* target = samples.bytes.data();
  for (const uint32_t pixel : pixels)
    for (int32_t k = 0; k < samples.channels; ++k) *target++ = static_cast<uint8_t>(pixel >> (8 * k));
}

Samples DecodeTiff(const Bytes& bytes) {
  TiffFile file(&bytes);
  const TiffLayout layout(file);
  Samples samples;
  if (layout.IsPlain()) {
    ReadPlain(file, layout, samples);
    samples.turn = TurnOfOrientationTag(file.Tag<uint16_t>(TIFFTAG_ORIENTATION, 1));
  } else {
    ReadConverted(file, layout, samples);
  }
  return samples;
}

Bytes EncodeTiff(const Samples& samples, const EncodingChoice&) {
  TiffFile file(nullptr);
  const bool alpha = samples.channels % 2 == 0;
  const auto set = [&](uint32_t tag, auto value) { file.Require(TIFFSetField(file.tiff, tag, value)); };
  set(TIFFTAG_IMAGEWIDTH, samples.width);
  set(TIFFTAG_IMAGELENGTH, samples.height);
  set(TIFFTAG_BITSPERSAMPLE, samples.bits);
  set(TIFFTAG_SAMPLESPERPIXEL, samples.channels);
  set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  set(TIFFTAG_PHOTOMETRIC, samples.channels > 2 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
  set(TIFFTAG_COMPRESSION, COMPRESSION_LZW);
  set(TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
  set(TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(file.tiff, 0));
  const uint16_t kind = EXTRASAMPLE_UNASSALPHA;
  if (alpha) file.Require(TIFFSetField(file.tiff, TIFFTAG_EXTRASAMPLES, 1, &kind));
  Bytes row(samples.RowBytes());  // the predictor works in place
  for (int32_t r = 0; r < samples.height; ++r) {
    std::copy_n(samples.Row(r), row.size(), row.data());
    file.Require(TIFFWriteScanline(file.tiff, row.data(), static_cast<uint32_t>(r), 0) == 1);
  }
  file.Require(TIFFWriteDirectory(file.tiff));
  file.Require(TIFFFlush(file.tiff));
  TIFFClose(file.tiff);
  file.tiff = nullptr;
  return std::move(file.bytes);
}

}  // namespace

const Codec kTiff = {"TIFF", {"tif", "tiff"}, true, true, IsTiff, DecodeTiff, EncodeTiff};

}  // namespace norv
