#include "kit/batch/inputs.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "kit/batch/journal.h"
#include "kit/formats/byte_stream.h"
#include "kit/formats/codec.h"
#include "kit/pictures/image_file.h"
#include "platform/paths.h"

namespace norv {
namespace {

namespace fs = std::filesystem;

constexpr char kTemporaryEnding[] = ".norv-tmp";

bool HasPictureContents(const std::string& path) {
  try {
    uint8_t start[64];  // more than any mark
    return CodecOfContents({start, FromFile(path).read(0, start, sizeof start)});
  } catch (const std::exception&) {
    return false;
  }
}

// A name that promises a picture is taken at its word: what is damaged then fails instead of being passed over.
bool IsPicture(const fs::path& path, const fs::file_status& status) {
  const std::string name = FromNative(path);
  return HasPictureName(name) || HasImageName(name) || (fs::is_regular_file(status) && HasPictureContents(name));
}

class Finder {
 public:
  Finder(bool recursive, const std::string& apart) : recursive_(recursive) {
    std::error_code error;
    apart_ = fs::weakly_canonical(ToNative(apart), error);
  }

  void AddPlace(const std::string& place) {
    std::error_code error;
    const fs::path path = ToNative(place);
    if (fs::is_directory(path, error))
      AddFolder(path, "");
    else
      AddFile(path, "", !fs::exists(path, error));
  }

  Inputs found;

 private:
  void AddFile(const fs::path& path, const std::string& folder, bool missing = false) {
    const std::string name = FromNative(path.filename());
    if (name == kJournalName || name.ends_with(kTemporaryEnding)) return;
    if (!known_.insert(FromNative(path.lexically_normal())).second) return;
    std::error_code error;
    if (missing || IsPicture(path, fs::status(path, error)))
      found.pictures.push_back({FromNative(path), folder, ""});
    else
      ++found.notPictures;
  }

  void AddFolder(const fs::path& path, const std::string& below) {
    std::vector<fs::path> files, folders;
    std::error_code error;
    fs::directory_iterator entry = Listing(path, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
      std::error_code ignored;
      if (!entry->is_directory(ignored))
        files.push_back(entry->path());
      else if (recursive_ && !entry->is_symlink(ignored) && fs::weakly_canonical(entry->path(), ignored) != apart_)
        folders.push_back(entry->path());
    }
    if (error) found.pictures.push_back({FromNative(path), below, "cannot read the folder: " + error.message()});
    std::ranges::sort(files);
    std::ranges::sort(folders);
    for (const fs::path& file : files) AddFile(file, below);
    for (const fs::path& folder : folders) AddFolder(folder, FromNative(ToNative(below) / folder.filename()));
  }

  bool recursive_;
  fs::path apart_;
  std::set<std::string> known_;
};

}  // namespace

Inputs FindInputs(const std::vector<std::string>& places, bool recursive, const std::string& apart) {
  Finder finder(recursive, apart);
  for (const std::string& place : places) finder.AddPlace(place);
  return finder.found;
}

}  // namespace norv
