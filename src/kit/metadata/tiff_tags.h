// Tags of TIFF and EXIF directories that mean something to us.
#pragma once

#include <cstdint>

namespace norv {

enum TiffTag : uint16_t {
  kTagImageWidth = 256,
  kTagImageLength = 257,
  kTagDocumentName = 269,
  kTagImageDescription = 270,
  kTagStripOffsets = 273,
  kTagOrientation = 274,
  kTagStripByteCounts = 279,
  kTagXResolution = 282,
  kTagYResolution = 283,
  kTagResolutionUnit = 296,
  kTagSoftware = 305,
  kTagArtist = 315,
  kTagWhitePoint = 318,
  kTagPrimaryChromaticities = 319,
  kTagThumbnailOffset = 513,
  kTagThumbnailBytes = 514,
  kTagXmp = 700,
  kTagCopyright = 33432,
  kTagIptc = 33723,
  kTagResources = 34377,
  kTagExif = 34665,
  kTagIcc = 34675,
  kTagGps = 34853,
  kTagLayers = 37724,  // of the picture as it was
  kTagComment = 40092,
  kTagPixelXDimension = 40962,
  kTagPixelYDimension = 40963,
  kTagInterop = 40965,
};

// Whether a field of the first directory says how pixels are stored, and so nothing about a picture stored anew.
constexpr bool IsOfPixels(uint16_t tag) {
  struct Range {
    uint16_t first, last;
  };
  constexpr Range kRanges[] = {
      {254, 259},      // kind of picture, sizes, bits, compression
      {262, 266},      // photometric interpretation, halftoning, order of bits
      {273, 273},      // strips
      {277, 281},      // samples, strips, extremes
      {284, 284},      // planes
      {288, 293},      // free bytes, curves of grey, options of fax
      {297, 297},      // page
      {301, 301},      // transfer function
      {317, 317},      // predictor
      {320, 330},      // colour map, halftone hints, tiles, pictures below
      {332, 347},      // inks, extra samples, formats of samples, tables
      {351, 351},      // clip path of pixels
      {512, 521},      // older JPEG
      {530, 530},      // reduced chrominance
      {532, 532},      // reference values
      {559, 559},      // rows of strips
      {33421, 33422},  // colour filter array
      {50706, 51125},  // raw pictures
  };
  for (const Range& range : kRanges)
    if (tag >= range.first && tag <= range.last) return true;
  return false;
}

// Fields of the first directory that Metadata has a place of its own for, and layers, which would be another picture's.
constexpr bool IsCarriedApart(uint16_t tag) {
  return tag == kTagXmp || tag == kTagIptc || tag == kTagResources || tag == kTagIcc || tag == kTagLayers;
}

}  // namespace norv
