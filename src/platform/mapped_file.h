// A file as read-only memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace norv {

// The file must keep its length while it is mapped; on Windows it cannot be replaced meanwhile.
class MappedFile {
 public:
  // A file that cannot be opened or mapped leaves IsOpen() false. An empty file is open with no bytes.
  explicit MappedFile(const std::string& path);
  ~MappedFile();
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;

  bool IsOpen() const { return open_; }
  const char* Bytes() const { return bytes_; }
  int64_t Size() const { return size_; }

  // Brings the whole file into memory, front to back, so that it can then be read in any order at memory speed.
  void Populate() const;

 private:
  bool open_ = false;
  const char* bytes_ = nullptr;
  int64_t size_ = 0;
};

}  // namespace norv
