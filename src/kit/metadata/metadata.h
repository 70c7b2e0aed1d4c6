// What a picture carries beside its pixels. To us these are bytes: carried, never trusted.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace norv {

// The keyword of the text that says how the picture beside it was made (proof/receipt.h): of no other picture, so that
// it is never carried on.
inline constexpr char kReceiptKeyword[] = "norv receipt";

// A comment or a named text.
struct TextEntry {
  std::string keyword, text;             // UTF-8
  bool latin = false;                    // stands in the file as Latin-1
  bool compressed = false;               // PNG: in the file
  std::string language{}, translated{};  // PNG: of international texts, the latter the keyword

  bool operator==(const TextEntry&) const = default;
};

enum class ResolutionUnit { none, inch, metre };  // none: the two say the shape of a pixel

// Pixels a unit.
struct Resolution {
  double x, y;
  ResolutionUnit unit = ResolutionUnit::inch;

  bool operator==(const Resolution&) const = default;
};

struct Metadata {
  std::vector<uint8_t> icc;        // the colour profile
  std::vector<uint8_t> exif;       // from its byte order mark on ("II" or "MM"), without what a format sets before it
  std::vector<uint8_t> xmp;        // the packet
  std::vector<uint8_t> xmpMore;    // JPEG: its extension, which the packet names
  std::vector<uint8_t> iptc;       // the datasets, without the wrapping of image resources
  std::vector<uint8_t> resources;  // other image resources ("8BIM" ...), one behind the other
  std::vector<TextEntry> text;
  std::optional<Resolution> resolution;
  bool lossless = false;                                // the file lost nothing, where its format can be either
  std::optional<double> gamma;                          // of the file's samples: PNG's gAMA
  std::optional<std::array<double, 8>> chromaticities;  // x, y of white, red, green, blue
  std::optional<int32_t> intent;                        // sRGB with this rendering intent, 0 .. 3: PNG's sRGB
  std::optional<std::array<uint8_t, 4>> codePoints;     // of the colours (ITU-T H.273): PNG's cICP
  int32_t orientation = 0;  // EXIF's or TIFF's tag that the pixels were stored under; 0: none

  bool operator==(const Metadata&) const = default;
};

}  // namespace norv
