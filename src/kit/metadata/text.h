// Encodings of text.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace norv {

bool IsUtf8(std::string_view text);
std::string Utf8OfLatin1(std::string_view latin);
// Nothing where a character is none of Latin-1.
std::optional<std::string> Latin1OfUtf8(std::string_view text);
// Little-endian, with a zero at its end.
std::vector<uint8_t> Utf16Of(std::string_view text);
// Back, up to a zero or the end; what is no character becomes the one for that, U+FFFD.
std::string Utf8OfUtf16(std::span<const uint8_t> bytes);

std::string_view CharactersOf(std::span<const uint8_t> bytes);

// The bytes that a profile in hexadecimal digits stands for, as older programs put them into texts of a PNG: a line
// with a name, one with their number, the digits. Nothing where that is damaged.
std::optional<std::vector<uint8_t>> BytesOfRawProfile(std::string_view text);
std::string RawProfileOf(const char* name, std::span<const uint8_t> bytes);

}  // namespace norv
