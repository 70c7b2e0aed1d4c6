#include "kit/training/picture_folder.h"

#include <algorithm>
#include <filesystem>

#include "kit/failure.h"
#include "kit/pictures/image_file.h"
#include "platform/paths.h"

namespace norv {

std::vector<std::string> PicturesIn(const std::string& folder) {
  std::error_code error;
  std::vector<std::string> names;
  std::filesystem::directory_iterator entry = Listing(ToNative(folder), error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    const std::string name = FromNative(entry->path().filename());
    if ((HasPictureName(name) || HasImageName(name)) && !std::filesystem::is_directory(entry->path()))
      names.push_back(name);
  }
  if (error) Fail("cannot read the folder %s: %s", folder.c_str(), error.message().c_str());
  if (names.empty()) Fail("there are no pictures in %s", folder.c_str());
  std::sort(names.begin(), names.end());
  return names;
}

std::string PathInFolder(const std::string& folder, const std::string& name) {
  return FromNative(ToNative(folder) / ToNative(name));
}

}  // namespace norv
