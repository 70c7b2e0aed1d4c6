// Text as this system takes and gives it. Ours is UTF-8 everywhere.
#pragma once

#include <cstdio>
#include <string>

namespace norv {

// True: the stream goes to a console that does not take UTF-8 as it is, and the text stands there.
bool ShowInConsole(const std::string& utf8, FILE* stream);

// On Windows, whose own text is of wide characters.
std::wstring Wide(const std::string& utf8);
std::string Utf8(const wchar_t* text);

// A path as functions of the system take it: in full behind a mark where it is longer than they take as it stands.
std::wstring WidePath(const std::string& utf8);

}  // namespace norv
