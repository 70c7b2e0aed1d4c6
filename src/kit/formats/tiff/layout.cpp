#include "kit/formats/tiff/layout.h"

#include <algorithm>
#include <cstdint>

#include "kit/failure.h"
#include "kit/formats/samples.h"
#include "kit/formats/tiff/device_colour.h"

namespace norv {
namespace {

SampleKind KindOf(TiffFile& file) {
  switch (file.Tag<uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT)) {
    case SAMPLEFORMAT_UINT:
    case SAMPLEFORMAT_VOID:
      return SampleKind::unsignedInteger;
    case SAMPLEFORMAT_INT:
      return SampleKind::signedInteger;
    case SAMPLEFORMAT_IEEEFP:
      return SampleKind::floating;
    default:
      Fail("TIFF: complex numbers are no picture");
  }
}

// A file may leave it out.
uint16_t PhotometricOf(TiffFile& file, uint16_t channels) {
  uint16_t photometric = 0;
  if (TIFFGetField(file.tiff, TIFFTAG_PHOTOMETRIC, &photometric)) return photometric;
  return channels >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
}

ColourKind ColoursOf(const TiffLayout& layout) {
  switch (layout.photometric) {
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_MINISWHITE:
      return ColourKind::grey;
    case PHOTOMETRIC_RGB:
      return ColourKind::rgb;
    case PHOTOMETRIC_PALETTE:
      return layout.bits <= 16 ? ColourKind::palette : ColourKind::other;
    default:
      return ColourKind::other;
  }
}

void FindAlpha(TiffFile& file, TiffLayout& layout) {
  const int32_t colours = layout.ColourChannels();
  uint16_t count = 0;
  uint16_t* kinds = nullptr;
  if (!TIFFGetField(file.tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds)) count = 0;
  for (int32_t k = 0; k < count && colours + k < layout.channels && layout.alpha < 0; ++k)
    if (kinds[k] != EXTRASAMPLE_UNSPECIFIED) {
      layout.alpha = colours + k;
      layout.multiplied = kinds[k] == EXTRASAMPLE_ASSOCALPHA;
    }
  // A single channel too many is most likely that too.
  if (layout.alpha < 0 && layout.channels == colours + 1 && !layout.device) layout.alpha = colours;
}

void FindPalette(TiffFile& file, TiffLayout& layout) {
  uint16_t* map[3] = {};
  if (!TIFFGetField(file.tiff, TIFFTAG_COLORMAP, &map[0], &map[1], &map[2])) Fail("TIFF: a palette is missing");
  const size_t count = size_t{1} << layout.bits;
  // Some writers filled in only 8 of the 16 bits.
  const bool small = std::ranges::all_of(
      map, [&](uint16_t* part) { return std::all_of(part, part + count, [](uint16_t value) { return value < 256; }); });
  layout.palette.resize(3 * count);
  layout.greyPalette = true;
  for (size_t i = 0; i < count; ++i) {
    for (size_t k = 0; k < 3; ++k) layout.palette[3 * i + k] = static_cast<uint8_t>(map[k][i] >> (small ? 0 : 8));
    layout.greyPalette &= map[0][i] == map[1][i] && map[1][i] == map[2][i];
  }
}

}  // namespace

TiffLayout::TiffLayout(TiffFile& file)
    : width(file.Tag<uint32_t>(TIFFTAG_IMAGEWIDTH, 0)),
      height(file.Tag<uint32_t>(TIFFTAG_IMAGELENGTH, 0)),
      bits(file.Tag<uint16_t>(TIFFTAG_BITSPERSAMPLE, 1)),
      channels(file.Tag<uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1)),
      photometric(PhotometricOf(file, channels)),
      orientation(file.Tag<uint16_t>(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT)),
      kind(KindOf(file)),
      separate(channels > 1 && file.Tag<uint16_t>(TIFFTAG_PLANARCONFIG, 0) == PLANARCONFIG_SEPARATE),
      tiled(TIFFIsTiled(file.tiff)),
      whiteIsZero(photometric == PHOTOMETRIC_MINISWHITE) {
  RequirePossible(width, height);
  if (photometric == PHOTOMETRIC_YCBCR && file.Tag<uint16_t>(TIFFTAG_COMPRESSION, 0) == COMPRESSION_JPEG && !separate) {
    file.Require(TIFFSetField(file.tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB));
    photometric = PHOTOMETRIC_RGB;
  }
  device = DevicePixelsOf(file);
  colours = device ? ColourKind::device : ColoursOf(*this);
  if (colours == ColourKind::other) return;
  if (channels < ColourChannels()) Fail("TIFF: %d samples a pixel are too few for its colours", channels);
  const bool known = kind == SampleKind::floating ? bits == 16 || bits == 24 || bits == 32 || bits == 64 : bits <= 32;
  if (bits == 0 || !known) Fail("TIFF: samples of %d bits of this kind", bits);
  const bool lab = device && device->kind != DeviceColour::inks;
  if ((colours == ColourKind::palette && kind != SampleKind::unsignedInteger) ||
      (lab && (kind == SampleKind::floating || (bits != 8 && bits != 16))))
    Fail("TIFF: colours in samples of this kind");
  FindAlpha(file, *this);
  if (colours == ColourKind::palette) FindPalette(file, *this);
  if (!device) return;
  if (lab) kind = SampleKind::unsignedInteger;  // as the pattern of their bits is explained
  device->bits = Shape().bits;
  device->channels = ColourChannels() + (alpha >= 0);
  device->alpha = alpha >= 0;
}

int32_t TiffLayout::ColourChannels() const {
  if (device) return device->Colours();
  return colours == ColourKind::grey || colours == ColourKind::palette ? 1 : 3;
}

PictureShape TiffLayout::Shape() const {
  const bool grey = colours == ColourKind::grey || greyPalette;
  PictureShape shape = {static_cast<int32_t>(width), static_cast<int32_t>(height), (grey ? 1 : 3) + (alpha >= 0)};
  shape.turn = TurnOfOrientationTag(orientation);
  if (colours == ColourKind::palette || colours == ColourKind::other) return shape;
  shape.bits = kind == SampleKind::floating || bits > 16 ? 32 : bits > 8 ? 16 : 8;
  if (device) shape.bits = std::min(shape.bits, 16);
  return shape;
}

}  // namespace norv
