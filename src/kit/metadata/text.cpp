#include "kit/metadata/text.h"

#include <algorithm>
#include <charconv>

namespace norv {
namespace {

constexpr uint32_t kNoCharacter = 0xFFFFFFFF;

// The next character of UTF-8 (RFC 3629), taken away; kNoCharacter for what is none.
uint32_t Take(std::string_view& text) {
  const uint8_t first = static_cast<uint8_t>(text[0]);
  const int more = first < 0x80 ? 0 : first >= 0xC2 && first < 0xE0 ? 1 : (first & 0xF0) == 0xE0 ? 2 : 3;
  if ((first >= 0x80 && first < 0xC2) || first > 0xF4 || text.size() <= static_cast<size_t>(more)) return kNoCharacter;
  uint32_t character = more == 0 ? first : first & (0x3F >> more);
  for (int i = 1; i <= more; ++i) {
    const uint8_t next = static_cast<uint8_t>(text[static_cast<size_t>(i)]);
    if ((next & 0xC0) != 0x80) return kNoCharacter;
    character = character << 6 | (next & 0x3F);
  }
  constexpr uint32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
  if (character < kLeast[more] || character > 0x10FFFF || (character >= 0xD800 && character < 0xE000))
    return kNoCharacter;
  text.remove_prefix(static_cast<size_t>(more) + 1);
  return character;
}

void Append(std::string& text, uint32_t character) {
  const int more = character < 0x80 ? 0 : character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
  constexpr uint32_t kFirst[] = {0, 0xC0, 0xE0, 0xF0};
  text += static_cast<char>(kFirst[more] | character >> 6 * more);
  for (int i = more - 1; i >= 0; --i) text += static_cast<char>(0x80 | (character >> 6 * i & 0x3F));
}

int HexDigit(char c) {
  return c >= '0' && c <= '9'   ? c - '0'
         : c >= 'a' && c <= 'f' ? c - 'a' + 10
         : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                : -1;
}

}  // namespace

bool IsUtf8(std::string_view text) {
  while (!text.empty())
    if (Take(text) == kNoCharacter) return false;
  return true;
}

std::string Utf8OfLatin1(std::string_view latin) {
  std::string text;
  for (const char c : latin) Append(text, static_cast<uint8_t>(c));
  return text;
}

std::optional<std::string> Latin1OfUtf8(std::string_view text) {
  std::string latin;
  while (!text.empty()) {
    const uint32_t character = Take(text);
    if (character > 0xFF) return {};
    latin += static_cast<char>(character);
  }
  return latin;
}

std::vector<uint8_t> Utf16Of(std::string_view text) {
  std::vector<uint8_t> bytes;
  const auto put = [&](uint32_t unit) {
    bytes.push_back(static_cast<uint8_t>(unit));
    bytes.push_back(static_cast<uint8_t>(unit >> 8));
  };
  while (!text.empty()) {
    uint32_t character = Take(text);
    if (character == kNoCharacter) {
      character = 0xFFFD;
      text.remove_prefix(1);
    }
    if (character > 0xFFFF) {
      put(0xD800 + ((character - 0x10000) >> 10));
      character = 0xDC00 + ((character - 0x10000) & 0x3FF);
    }
    put(character);
  }
  put(0);
  return bytes;
}

std::string Utf8OfUtf16(std::span<const uint8_t> bytes) {
  std::string text;
  const auto unit = [&](size_t i) { return i + 1 < bytes.size() ? bytes[i] | uint32_t{bytes[i + 1]} << 8 : 0; };
  for (size_t i = 0; unit(i) != 0; i += 2) {
    uint32_t character = unit(i);
    if (character >= 0xD800 && character < 0xDC00 && (unit(i + 2) & 0xFC00) == 0xDC00) {
      character = 0x10000 + ((character - 0xD800) << 10) + (unit(i + 2) - 0xDC00);
      i += 2;
    }
    Append(text, character >= 0xD800 && character < 0xE000 ? 0xFFFD : character);
  }
  return text;
}

std::string_view CharactersOf(std::span<const uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::optional<std::vector<uint8_t>> BytesOfRawProfile(std::string_view text) {
  const size_t name = text.find_first_not_of('\n'), line = text.find('\n', name);
  if (line == std::string_view::npos) return {};
  text.remove_prefix(text.find_first_not_of(" \n", line) == std::string_view::npos
                         ? text.size()
                         : text.find_first_not_of(" \n", line));
  size_t count = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
  if (error != std::errc() || count > text.size() / 2) return {};
  text.remove_prefix(static_cast<size_t>(end - text.data()));
  std::vector<uint8_t> bytes;
  int high = -1;
  for (const char c : text) {
    const int digit = HexDigit(c);
    if (digit < 0 && c != '\n' && c != ' ' && c != '\r') return {};
    if (digit < 0) continue;
    if (high >= 0) bytes.push_back(static_cast<uint8_t>(high << 4 | digit));
    high = high >= 0 ? -1 : digit;
  }
  if (bytes.size() != count) return {};
  return bytes;
}

std::string RawProfileOf(const char* name, std::span<const uint8_t> bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string count = std::to_string(bytes.size());
  count.insert(0, 8 - std::min<size_t>(8, count.size()), ' ');
  std::string text = std::string("\n") + name + "\n" + count;
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (i % 36 == 0) text += '\n';
    text += {kDigits[bytes[i] >> 4], kDigits[bytes[i] & 15]};
  }
  return text + '\n';
}

}  // namespace norv
