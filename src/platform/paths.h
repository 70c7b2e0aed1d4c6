// Where files are: the executable's directory, and how a bare name becomes a path. Paths are UTF-8 on every platform.
#pragma once

#include <string>
#include <vector>

#include "platform/folder.h"

namespace norv {

// The executable's real path (symbolic links resolved) cut after its last separator, or the environment variable
// NORV_DIR when that is set and not empty. Ends in a separator; asked of the system once.
const std::string& ExecutableDirectory();

// The executable's real path cut after its last separator, whatever the environment says.
std::string OwnDirectory();

std::string PathOf(const std::string& name, Folder folder);

// The command line as UTF-8, whatever the platform hands to main().
std::vector<std::string> CommandLine(int argc, char** argv);

}  // namespace norv
