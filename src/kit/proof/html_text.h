// Texts and pictures inside a page that asks for nothing from outside.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace norv {

// Characters that a reader sees, whatever they are: nothing of it is taken for markup, in quotes neither. Control
// characters and bytes that are no UTF-8 become U+FFFD.
std::string HtmlText(std::string_view text);

// RFC 4648, 4.
std::string Base64(std::span<const uint8_t> bytes);

// "data:image/png;base64,..."
std::string DataUri(const char* type, std::span<const uint8_t> bytes);

}  // namespace norv
