#include "platform/paths.h"

#include <cstdlib>

#ifdef _WIN32
// clang-format off
#include <windows.h>
#include <shellapi.h>
// clang-format on
#else
#include <unistd.h>
#endif

namespace norv {
namespace {

#ifdef _WIN32

constexpr char kSeparator = '\\';

std::string Utf8(const wchar_t* wide, int length) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, wide, length, nullptr, 0, nullptr, nullptr);
  std::string text(size, '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide, length, text.data(), size, nullptr, nullptr);
  return text;
}

std::string ExecutablePath() {
  std::wstring path(512, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) return Utf8(path.data(), static_cast<int>(length));
    path.resize(2 * path.size());
  }
}

std::string Environment(const wchar_t* name) {
  const wchar_t* value = _wgetenv(name);
  return value ? Utf8(value, static_cast<int>(std::char_traits<wchar_t>::length(value))) : std::string();
}
#define NORV_ENVIRONMENT(name) Environment(L##name)

bool IsSeparator(char c) { return c == '\\' || c == '/'; }

#else

constexpr char kSeparator = '/';

std::string ExecutablePath() {
  std::string path(512, '\0');
  for (;;) {
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    if (length < 0) return "./";
    if (static_cast<size_t>(length) < path.size()) return path.substr(0, length);
    path.resize(2 * path.size());
  }
}

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}
#define NORV_ENVIRONMENT(name) Environment(name)

bool IsSeparator(char c) { return c == '/'; }

#endif

std::string FindExecutableDirectory() {
  std::string directory = NORV_ENVIRONMENT("NORV_DIR");
  if (!directory.empty()) {
    if (!IsSeparator(directory.back())) directory += kSeparator;
    return directory;
  }
  const std::string path = ExecutablePath();
  return path.substr(0, path.find_last_of(kSeparator) + 1);
}

}  // namespace

const std::string& ExecutableDirectory() {
  static const std::string directory = FindExecutableDirectory();
  return directory;
}

std::string PathOf(const std::string& name, Folder folder) {
  return folder == Folder::executable ? ExecutableDirectory() + name : name;
}

#ifdef _WIN32

std::wstring Wide(const std::string& utf8) {
  const int length = static_cast<int>(utf8.size());
  const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0);
  std::wstring wide(size, L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, wide.data(), size);
  return wide;
}

std::vector<std::string> CommandLine(int, char**) {
  int count = 0;
  wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 0; i < count; ++i)
    arguments.push_back(Utf8(words[i], static_cast<int>(std::char_traits<wchar_t>::length(words[i]))));
  LocalFree(words);
  return arguments;
}

#else

std::vector<std::string> CommandLine(int argc, char** argv) { return {argv, argv + argc}; }

#endif

}  // namespace norv
