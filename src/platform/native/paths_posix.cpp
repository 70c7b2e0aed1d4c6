#include <cstdlib>
#include <unistd.h>

#include "platform/native/places.h"
#include "platform/paths.h"

namespace norv {

const char* Separators() { return "/"; }
char ListSeparator() { return ':'; }

std::string ExecutablePath() {
  std::string path(512, '\0');
  for (;;) {
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    if (length < 0) return "./";
    if (static_cast<size_t>(length) < path.size()) return path.substr(0, length);
    path.resize(2 * path.size());
  }
}

std::string EnvironmentVariable(const std::string& name) {
  const char* value = std::getenv(name.c_str());
  return value ? value : "";
}

std::string ConfigurationFolder() {
  std::string folder = EnvironmentVariable("XDG_CONFIG_HOME");
  const std::string home = EnvironmentVariable("HOME");
  if (folder.starts_with('/')) return folder;
  return home.empty() ? "" : home + "/.config";
}

std::filesystem::path ToNative(const std::string& utf8) { return utf8; }

std::string FromNative(const std::filesystem::path& path) { return path.native(); }

std::filesystem::directory_iterator Listing(const std::filesystem::path& folder, std::error_code& error) {
  return std::filesystem::directory_iterator(folder, error);
}

FILE* OpenStream(const std::string& path, const char* mode) { return std::fopen(path.c_str(), mode); }

std::vector<std::string> CommandLine(int argc, char** argv) { return {argv, argv + argc}; }

}  // namespace norv
