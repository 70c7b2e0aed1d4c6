#include "platform/paths.h"

#include <cstring>

#include "platform/native/places.h"

namespace norv {
namespace {

std::string FindExecutableDirectory() {
  const char own = Separators()[0];
  const std::string directory = EnvironmentVariable("NORV_DIR");
  if (directory.empty()) return OwnDirectory();
  return std::strchr(Separators(), directory.back()) ? directory : directory + own;
}

}  // namespace

const std::string& ExecutableDirectory() {
  static const std::string directory = FindExecutableDirectory();
  return directory;
}

std::string OwnDirectory() {
  const std::string path = ExecutablePath();
  return path.substr(0, path.find_last_of(Separators()[0]) + 1);
}

std::string FileNameOf(const std::string& path) { return path.substr(path.find_last_of(Separators()) + 1); }

std::string PathOf(const std::string& name, Folder folder) {
  return folder == Folder::executable ? ExecutableDirectory() + name : name;
}

}  // namespace norv
