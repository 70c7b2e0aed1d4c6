// What people choose about a picture file, and what they are told of the formats.
#pragma once

#include <cstdint>
#include <string>

namespace norv {

struct EncodingChoice {
  int32_t quality = 0;           // of formats that lose something: 1 .. 100; 0: not chosen
  bool lossless = false;         // of formats that can be either
  std::string compression = "";  // trouble taken by formats without loss: "0" to "9", or "none"; empty: not chosen
  int32_t threads = 0;       // that work on it, which nothing shows of; 0: as many as the process may use processors
  bool strip = false;        // of metadata only the colour profile
  std::string receipt = "";  // that goes into a file which carries such a text (proof/receipt.h); empty: none

  int32_t Compression() const { return compression.empty() ? 5 : Uncompressed() ? 0 : compression[0] - '0'; }
  bool Uncompressed() const { return compression == "none"; }
  int32_t Quality() const { return quality != 0 ? quality : 95; }
};

struct ReadChoice {
  int32_t page = 0;  // of files that hold several pictures, from 1 on; 0: not chosen, the first

  int32_t Page() const { return page != 0 ? page : 1; }
};

struct WriteChoice {
  int32_t bits = 0;  // 8, 16, or 32 for floats; 0: the picture's own precision as far as the format can hold it
  EncodingChoice encoding;
  bool overwrite = false;  // a file that is there already
  bool dither = false;     // to 8 bits: rounded up or down by a pattern instead of to nearest
  std::string to;          // the format by its name or an extension; empty: as the file's name says
};

// The names of all picture formats, "PNG, JPEG, TIFF"; with a last word before the last, "PNG, JPEG or TIFF".
std::string ReadFormats(const char* lastWord = nullptr);
// The usual extensions of those that can be written, in the same way: ".png, .jpg or .tif".
std::string WrittenExtensions(const char* lastWord = nullptr);
// Why no picture goes to a format of this name, in whatever case; empty when one does: by names and extensions.
std::string WhyNoFormat(const std::string& word);
// Of those only what can keep every sample.
std::string LosslessExtensions(const char* lastWord = nullptr);

// The format that a picture goes to: the one that was chosen, else the one of the file's name, in lower case.
std::string FormatWord(const std::string& path, const WriteChoice& choice);

// Whether a picture format goes by this file name.
bool HasPictureName(const std::string& path);

// The part of the name behind its last point in lower case; empty without one.
std::string ExtensionOf(const std::string& path);

}  // namespace norv
