#include "kit/guidance/json.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace norv {
namespace {

constexpr std::string_view kNoCharacter = "\xEF\xBF\xBD";  // U+FFFD

// Bytes of the UTF-8 sequence that the text begins with: shortest form, no surrogates, at most U+10FFFF; 0: none.
size_t SequenceAt(std::string_view text) {
  const auto byte = [&](size_t i) { return i < text.size() ? uint32_t{static_cast<uint8_t>(text[i])} : 0; };
  const auto follows = [&](size_t i) { return (byte(i) & 0xC0) == 0x80; };
  const uint32_t first = byte(0), second = byte(1);
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first <= 0xDF) return follows(1) ? 2 : 0;
  if ((first & 0xF0) == 0xE0) {
    const bool shortest = first != 0xE0 || second >= 0xA0, surrogate = first == 0xED && second >= 0xA0;
    return follows(1) && follows(2) && shortest && !surrogate ? 3 : 0;
  }
  if (first >= 0xF0 && first <= 0xF4) {
    const bool shortest = first != 0xF0 || second >= 0x90, possible = first != 0xF4 || second < 0x90;
    return follows(1) && follows(2) && follows(3) && shortest && possible ? 4 : 0;
  }
  return 0;
}

// A character that may not stand in a string as it is.
std::string Escaped(char c) {
  switch (c) {
    case '"':
      return "\\\"";
    case '\\':
      return "\\\\";
    case '\n':
      return "\\n";
    case '\t':
      return "\\t";
    default:
      char text[8];
      std::snprintf(text, sizeof text, "\\u%04x", static_cast<unsigned>(static_cast<uint8_t>(c)));
      return text;
  }
}

template <typename Values, typename Text>
std::string Listed(const Values& values, const Text& text) {
  std::string list = "[";
  for (const auto& value : values) list.append(list.size() > 1 ? ", " : "").append(text(value));
  return list + "]";
}

}  // namespace

std::string JsonText(std::string_view text) {
  std::string quoted = "\"";
  while (!text.empty()) {
    const size_t length = SequenceAt(text);
    const char c = text[0];
    if (length == 0)
      quoted += kNoCharacter;
    else if (length == 1 && (static_cast<uint8_t>(c) < 0x20 || c == '"' || c == '\\' || c == '<' || c == 0x7F))
      quoted += Escaped(c);
    else
      quoted += text.substr(0, length);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return quoted += '"';
}

std::string JsonNumber(double value) {
  if (!std::isfinite(value)) return "null";
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

JsonObject& JsonObject::Add(std::string_view key, const std::string& value) {
  members_ += (members_.empty() ? "" : ", ") + JsonText(key) + ": " + value;
  return *this;
}

JsonObject& JsonObject::Text(std::string_view key, std::string_view value) { return Add(key, JsonText(value)); }
JsonObject& JsonObject::Number(std::string_view key, double value) { return Add(key, JsonNumber(value)); }
JsonObject& JsonObject::Whole(std::string_view key, int64_t value) { return Add(key, std::to_string(value)); }
JsonObject& JsonObject::Flag(std::string_view key, bool value) { return Add(key, value ? "true" : "false"); }
JsonObject& JsonObject::Null(std::string_view key) { return Add(key, "null"); }
JsonObject& JsonObject::Object(std::string_view key, const JsonObject& value) { return Add(key, value.Line()); }

JsonObject& JsonObject::List(std::string_view key, const std::vector<JsonObject>& values) {
  return Add(key, Listed(values, [](const JsonObject& value) { return value.Line(); }));
}

JsonObject& JsonObject::Numbers(std::string_view key, const std::vector<double>& values) {
  return Add(key, Listed(values, JsonNumber));
}

JsonObject& JsonObject::Texts(std::string_view key, const std::vector<std::string>& values) {
  return Add(key, Listed(values, [](const std::string& value) { return JsonText(value); }));
}

}  // namespace norv
