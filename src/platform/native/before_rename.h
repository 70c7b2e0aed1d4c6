// What has to be known of a file before it stands under its name: a note made before outlives a kill right behind.
#pragma once

#include <functional>
#include <string>

namespace norv {

// While it lives, every FileOut of its thread that commits calls it, with the file's temporary name and the name that
// it is about to get; all its bytes are in the file then. One at a time a thread.
class BeforeRename {
 public:
  using Note = std::function<void(const std::string& temporary, const std::string& destination)>;

  explicit BeforeRename(Note note);
  ~BeforeRename();
  BeforeRename(const BeforeRename&) = delete;
  BeforeRename& operator=(const BeforeRename&) = delete;

 private:
  Note note_;
};

// The temporary name of the file that this thread has last opened for writing; empty: it is written directly.
const std::string& LastTemporary();

}  // namespace norv
