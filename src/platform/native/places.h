// What the system says about places, behind platform/paths.h. Text is UTF-8.
#pragma once

#include <string>

namespace norv {

// The characters that end a folder's name in a path, the system's own one first.
const char* Separators();

// What stands between folders in a list of them.
char ListSeparator();

// The executable's path, symbolic links resolved.
std::string ExecutablePath();

// Empty when it is not set.
std::string EnvironmentVariable(const std::string& name);

// Where programs keep what their users have set: XDG_CONFIG_HOME or .config in the home folder, on Windows APPDATA.
// Empty when the system names none.
std::string ConfigurationFolder();

}  // namespace norv
