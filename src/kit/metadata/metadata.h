// What a picture carries beside its pixels. To us these are bytes: carried, never trusted.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace norv {

// A comment or a named text.
struct TextEntry {
  std::string keyword, text;  // UTF-8
};

// Pixels a metre.
struct Resolution {
  double x, y;
};

struct Metadata {
  std::vector<uint8_t> icc;   // the colour profile
  std::vector<uint8_t> exif;  // from its byte order mark on ("II" or "MM"), without what a format sets before it
  std::vector<uint8_t> xmp;   // the packet
  std::vector<uint8_t> iptc;  // the datasets, without the wrapping of image resources
  std::vector<TextEntry> text;
  std::optional<Resolution> resolution;
  bool lossless = false;                                // the file lost nothing, where its format can be either
  std::optional<double> gamma;                          // of the file's samples: PNG's gAMA
  std::optional<std::array<double, 8>> chromaticities;  // x, y of white, red, green, blue
};

}  // namespace norv
