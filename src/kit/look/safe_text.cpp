#include "kit/look/safe_text.h"

#include <cstdint>
#include <cstdio>

#include "kit/metadata/text.h"

namespace norv {
namespace {

// Bytes of the character that begins here; 0 for what is none.
size_t CharacterBytes(std::string_view text) {
  for (size_t bytes = 1; bytes <= 4 && bytes <= text.size(); ++bytes)
    if (IsUtf8(text.substr(0, bytes))) return bytes;
  return 0;
}

uint32_t CodePoint(std::string_view character) {
  const auto first = static_cast<uint8_t>(character[0]);
  if (character.size() == 1) return first;
  uint32_t code = first & (0x7Fu >> character.size());
  for (const char c : character.substr(1)) code = code << 6 | (static_cast<uint8_t>(c) & 0x3F);
  return code;
}

// Characters that are not seen but change what is.
bool IsUnseen(uint32_t code) {
  return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0x61C || (code >= 0x200B && code <= 0x200F) ||
         (code >= 0x2028 && code <= 0x202E) || (code >= 0x2060 && code <= 0x206F) || code == 0xFEFF ||
         (code >= 0xE0000 && code <= 0xE0FFF);
}

std::string Escaped(uint32_t code) {
  if (code == '\n') return "\\n";
  if (code == '\t') return "\\t";
  if (code == '\r') return "\\r";
  char text[16];
  std::snprintf(text, sizeof text, code < 0x100 ? "\\x%02x" : code < 0x10000 ? "\\u%04x" : "\\U%08x", code);
  return text;
}

}  // namespace

std::string SafeText(std::string_view text, size_t most) {
  std::string safe;
  size_t at = 0;
  for (size_t characters = 0; at < text.size() && characters < most; ++characters) {
    const size_t bytes = CharacterBytes(text.substr(at));
    const std::string_view character = text.substr(at, bytes);
    const uint32_t code = bytes ? CodePoint(character) : static_cast<uint8_t>(text[at]);
    if (bytes == 0 || IsUnseen(code))
      safe += Escaped(code);
    else if (code == '\\')
      safe += "\\\\";
    else
      safe += character;
    at += bytes ? bytes : 1;
  }
  if (at < text.size()) safe += " ... (" + std::to_string(text.size()) + " bytes)";
  return safe;
}

}  // namespace norv
