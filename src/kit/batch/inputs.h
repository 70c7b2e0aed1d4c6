// Pictures found in folders.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace norv {

// A picture, or what is said of one that could not be found.
struct Input {
  std::string path;    // as given, or put together of the folder as given and what is in it
  std::string folder;  // below the folder that was given, without an end; empty: in it, or given itself
  std::string error;   // of a folder that cannot be read
};

struct Inputs {
  std::vector<Input> pictures;
  int64_t notPictures = 0;  // regular and special files that are none
};

// The places as given, what is in folders sorted by name, files before folders; folders in folders where `recursive`
// says so, but for symbolic links to them, and never the folder `apart`. A file is a picture when its name or its
// contents say so; the temporary files and journals of runs are nothing. A file that is given twice is one.
Inputs FindInputs(const std::vector<std::string>& places, bool recursive, const std::string& apart);

}  // namespace norv
