// The pictures of a folder.
#pragma once

#include <string>
#include <vector>

namespace norv {

// The names, without the folder's, of all files that are called like pictures or images of ours, sorted. Throws a
// Failure for a folder that cannot be read or that has none.
std::vector<std::string> PicturesIn(const std::string& folder);

// The whole name of one of them.
std::string PathInFolder(const std::string& folder, const std::string& name);

}  // namespace norv
