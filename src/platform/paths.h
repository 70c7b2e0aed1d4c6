// Where files are: the executable's directory, and how a bare name becomes a path. Paths are UTF-8 on every platform.
// Whoever hands text to the standard library as a path, or takes a path for text, does it here: on Windows it would be
// read in another code.
#pragma once

#include <cstdio>
#include <filesystem>
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

// As the system has it; a long one so that the system takes it.
std::filesystem::path ToNative(const std::string& utf8);

// With / between folders on every system.
std::string FromNative(const std::filesystem::path& path);

// What is in a folder; an error too where the system's path is too long for that.
std::filesystem::directory_iterator Listing(const std::filesystem::path& folder, std::error_code& error);

// Behind the last folder.
std::string FileNameOf(const std::string& path);

// As fopen does; null where it cannot be opened.
FILE* OpenStream(const std::string& path, const char* mode);

// The command line as UTF-8, whatever the platform hands to main().
std::vector<std::string> CommandLine(int argc, char** argv);

}  // namespace norv
