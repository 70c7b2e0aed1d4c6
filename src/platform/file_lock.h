// One writer at a time: a file that is changed in place, or read and then replaced, is held against other runs.
#pragma once

#include <cstdint>
#include <string>

namespace norv {

// Holds the file of that name, waiting while another run holds it. When it is held, the name stands for the file that
// it stood for when the lock was taken, as long as all who replace it take the lock first. A file that does not exist
// (and a file system without locks) is not held; nothing fails then.
class FileLock {
 public:
  explicit FileLock(const std::string& path);
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

 private:
  intptr_t handle_ = -1;  // a descriptor, or a mutex's handle; -1: the file is not held
};

}  // namespace norv
