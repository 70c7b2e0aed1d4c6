// What people choose about a picture file, and what they are told of the formats.
#pragma once

#include <cstdint>
#include <string>

namespace norv {

struct EncodingChoice {
  int32_t quality = 95;  // of formats that lose something: 1 .. 100
};

struct ReadChoice {
  int32_t page = 1;  // of files that hold several pictures, from 1 on
};

struct WriteChoice {
  int32_t bits = 0;  // 8 or 16; 0: the picture's own precision as far as the format can hold it
  EncodingChoice encoding;
};

// The names of all picture formats, "PNG, JPEG, TIFF"; with a last word before the last, "PNG, JPEG or TIFF".
std::string KnownFormats(const char* lastWord = nullptr);
// Their usual extensions in the same way, ".png, .jpg or .tif".
std::string KnownExtensions(const char* lastWord = nullptr);

// Whether a picture format goes by this file name.
bool HasPictureName(const std::string& path);

// The part of the name behind its last point in lower case; empty without one.
std::string ExtensionOf(const std::string& path);

}  // namespace norv
