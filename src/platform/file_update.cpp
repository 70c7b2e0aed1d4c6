#include "platform/file_update.h"

#include "platform/console.h"

namespace norv {

FileUpdate::FileUpdate(const std::string& path) : path_(path), file_(NativeFile::OpenForUpdate(path)) {
  if (!file_.IsOpen()) reason_ = LastSystemError();
}

void FileUpdate::Seek(int64_t offset) {
  if (!Failed() && !file_.Seek(offset)) reason_ = LastSystemError();
}

void FileUpdate::Write(const void* bytes, size_t size) {
  const char* source = static_cast<const char*>(bytes);
  while (size > 0 && !Failed()) {
    const int64_t sent = file_.Write(source, size);
    if (sent <= 0) {
      reason_ = LastSystemError();
      return;
    }
    source += sent;
    size -= static_cast<size_t>(sent);
  }
}

void FileUpdate::Flush() {
  if (!Failed() && !file_.Flush()) reason_ = LastSystemError();
}

void FileUpdate::CutBack(int64_t size) {
  if (Failed() && file_.IsOpen()) static_cast<void>(file_.Resize(size));
}

bool FileUpdate::Finish() {
  if (file_.IsOpen() && !file_.Close() && !Failed()) reason_ = LastSystemError();
  if (!Failed()) return true;
  Complain("cannot write %s: %s", path_.c_str(), reason_.c_str());
  return false;
}

}  // namespace norv
