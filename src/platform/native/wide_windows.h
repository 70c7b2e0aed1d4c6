// Text as this system takes and gives it. Ours is UTF-8 everywhere.
#pragma once

#include <string>

namespace norv {

std::wstring Wide(const std::string& utf8);
std::string Utf8(const wchar_t* text);

}  // namespace norv
