// What a picture's metadata become on the way into a file.
#pragma once

#include <memory>
#include <string>

#include "kit/formats/picture_shape.h"
#include "kit/metadata/metadata.h"

namespace norv {

// Kinds that a format has a place for.
enum Carries : uint32_t {
  kCarriesIcc = 1,
  kCarriesExif = 2,
  kCarriesXmp = 4,
  kCarriesXmpParts = 8,  // XMP as a packet and its extension
  kCarriesIptc = 16,     // and other image resources
  kCarriesText = 32,
  kCarriesResolution = 64,
  kCarriesGamma = 128,
  kCarriesChromaticities = 256,
  kCarriesReceipt = 512,  // a text of its own
};

// Of a picture that is about to be stored upright with this shape: sizes, orientation and thumbnail put right; what the
// format has no place of its own for in EXIF, where that has one; what cannot be carried left out with a warning.
// strip: all but the colour profile goes; the receipt of the picture that it comes from always. Null when nothing is
// left.
std::shared_ptr<const Metadata> CarriedInto(const PictureShape& shape, uint32_t carries, const char* format,
                                            bool strip);

// "300 dpi".
std::string TextOf(const Resolution& resolution);

}  // namespace norv
