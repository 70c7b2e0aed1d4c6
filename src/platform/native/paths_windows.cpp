// clang-format off
#include <windows.h>
#include <shellapi.h>
// clang-format on

#include "platform/native/places.h"
#include "platform/native/text.h"
#include "platform/paths.h"

namespace norv {

std::wstring Wide(const std::string& utf8) {
  const int length = static_cast<int>(utf8.size());
  const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0);
  std::wstring wide(size, L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, wide.data(), size);
  return wide;
}

std::string Utf8(const wchar_t* text) {
  const int length = static_cast<int>(std::char_traits<wchar_t>::length(text));
  const int size = WideCharToMultiByte(CP_UTF8, 0, text, length, nullptr, 0, nullptr, nullptr);
  std::string utf8(size, '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, length, utf8.data(), size, nullptr, nullptr);
  return utf8;
}

std::wstring WidePath(const std::string& utf8) {
  constexpr DWORD kLongest = 247;  // what a folder's path may have
  const std::wstring path = Wide(utf8), mark = L"\\\\?\\";
  std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
  if (full.size() <= kLongest || path.starts_with(mark)) return path;
  full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  return full.starts_with(L"\\\\") ? mark + L"UNC" + full.substr(1) : mark + full;
}

std::filesystem::path ToNative(const std::string& utf8) { return WidePath(utf8); }

std::string FromNative(const std::filesystem::path& path) {
  const std::string text = Utf8(path.generic_wstring().c_str()), mark = "//?/", share = mark + "UNC/";
  if (text.starts_with(share)) return "//" + text.substr(share.size());
  return text.starts_with(mark) ? text.substr(mark.size()) : text;
}

std::filesystem::directory_iterator Listing(const std::filesystem::path& folder, std::error_code& error) {
  constexpr size_t kLongest = 240;  // beyond it the run-time library lists another one
  if (std::filesystem::absolute(folder).native().size() <= kLongest)
    return std::filesystem::directory_iterator(folder, error);
  error = std::make_error_code(std::errc::filename_too_long);
  return {};
}

FILE* OpenStream(const std::string& path, const char* mode) {
  return _wfopen(WidePath(path).c_str(), Wide(mode).c_str());
}

const char* Separators() { return "\\/"; }
char ListSeparator() { return ';'; }

namespace {

// Where the symbolic link leads; the link itself where that cannot be said as an ordinary path.
std::wstring BehindLink(const std::wstring& link) {
  const HANDLE file = CreateFileW(link.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return link;
  std::wstring path(GetFinalPathNameByHandleW(file, nullptr, 0, FILE_NAME_NORMALIZED), L'\0');
  path.resize(GetFinalPathNameByHandleW(file, path.data(), static_cast<DWORD>(path.size()), FILE_NAME_NORMALIZED));
  CloseHandle(file);
  const std::wstring drive = L"\\\\?\\", share = L"\\\\?\\UNC\\";
  if (path.rfind(share, 0) == 0) return L"\\\\" + path.substr(share.size());
  return path.rfind(drive, 0) == 0 ? path.substr(drive.size()) : link;
}

}  // namespace

std::string ExecutablePath() {
  std::wstring path(512, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      break;
    }
    path.resize(2 * path.size());
  }
  const DWORD attributes = GetFileAttributesW(path.c_str());
  const bool link = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT);
  return Utf8((link ? BehindLink(path) : path).c_str());
}

std::string EnvironmentVariable(const std::string& name) {
  const wchar_t* value = _wgetenv(Wide(name).c_str());
  return value ? Utf8(value) : "";
}

std::string ConfigurationFolder() { return EnvironmentVariable("APPDATA"); }

std::vector<std::string> CommandLine(int, char**) {
  int count = 0;
  wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 0; i < count; ++i) arguments.push_back(Utf8(words[i]));
  LocalFree(words);
  return arguments;
}

}  // namespace norv
