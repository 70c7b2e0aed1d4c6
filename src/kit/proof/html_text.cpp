#include "kit/proof/html_text.h"

#include <algorithm>

#include "kit/metadata/text.h"

namespace norv {
namespace {

constexpr char kNoCharacter[] = "\xEF\xBF\xBD";  // U+FFFD
constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::string HtmlText(std::string_view text) {
  const bool valid = IsUtf8(text);
  std::string html;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte < 0x20 && c != '\n') || byte == 0x7F || (byte >= 0x80 && !valid))
      html += kNoCharacter;
    else if (c == '&' || c == '<' || c == '>' || c == '"' || c == '\'')
      html += "&#" + std::to_string(byte) + ";";
    else
      html += c;
  }
  return html;
}

std::string Base64(std::span<const uint8_t> bytes) {
  std::string text;
  text.reserve(bytes.size() / 3 * 4 + 4);
  for (size_t i = 0; i < bytes.size(); i += 3) {
    const size_t count = std::min<size_t>(bytes.size() - i, 3);
    uint32_t group = 0;
    for (size_t k = 0; k < 3; ++k) group = group << 8 | (k < count ? bytes[i + k] : 0u);
    for (size_t k = 0; k < 4; ++k) text += k <= count ? kDigits[group >> (18 - 6 * k) & 63] : '=';
  }
  return text;
}

std::string DataUri(const char* type, std::span<const uint8_t> bytes) {
  return std::string("data:") + type + ";base64," + Base64(bytes);
}

}  // namespace norv
