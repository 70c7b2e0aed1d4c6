// Changes bytes of a file that stands, in place: for files that grow by records behind a count.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/native/native_file.h"

namespace norv {

// Every failure stays: once a call has failed, later ones do nothing, and Finish() reports the first reason.
class FileUpdate {
 public:
  // Opens an existing file for writing. Failure: IsOpen() is false, the reason is in Reason().
  explicit FileUpdate(const std::string& path);

  bool IsOpen() const { return file_.IsOpen(); }
  const std::string& Reason() const { return reason_; }

  // The next bytes go to this place.
  void Seek(int64_t offset);
  void Write(const void* bytes, size_t size);
  // Everything written so far is on the disk when this returns.
  void Flush();
  // Only after a failure: what stands behind this place goes again.
  void CutBack(int64_t size);
  bool Failed() const { return !reason_.empty(); }
  // Closes; true when everything was written. Otherwise the reason is on standard error.
  bool Finish();

 private:
  std::string path_;
  std::string reason_;
  NativeFile file_;
};

}  // namespace norv
