// The system's own file calls behind platform/file.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include "platform/interrupt.h"

namespace norv {

// A descriptor or handle; closed when it goes. Calls that fail leave the reason with the system (LastSystemError).
class NativeFile {
 public:
  NativeFile() = default;
  ~NativeFile() { Close(); }
  NativeFile(NativeFile&& other) noexcept { std::swap(handle_, other.handle_); }
  NativeFile& operator=(NativeFile&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }

  // Directories are refused.
  static NativeFile OpenForReading(const std::string& path);
  static NativeFile OpenForWriting(const std::string& path);
  // An existing file, to be changed in place.
  static NativeFile OpenForUpdate(const std::string& path);
  // A new file beside the destination, with the old one's permissions, locked until it is closed; its name goes to
  // `name`, and from before it exists `guard` removes it when the run is ended from outside.
  static NativeFile CreateTemporary(const std::string& destination, std::string& name,
                                    std::optional<ScratchGuard>& guard);

  bool IsOpen() const { return handle_ != kNone; }
  int64_t Size() const;
  // Bytes moved, 0 at the end of the file, negative on failure.
  int64_t Read(void* bytes, size_t size);
  int64_t Write(const void* bytes, size_t size);
  // Moves the reading position on; false when that is behind the end.
  bool Skip(int64_t bytes);
  // Moves to this distance from the file's start.
  bool Seek(int64_t offset);
  // Cuts the file to this size.
  bool Resize(int64_t size);
  // False for pipes and terminals, whose bytes pass once.
  bool CanSeek() const;
  bool Flush();
  // Lets the system begin to write what it holds, where it can be told so; nobody waits for it.
  void BeginFlush();
  bool Close();
  // Renames this (flushed) file from its temporary name over the destination and closes it. durable: the new name is on
  // the disk when this returns.
  bool Rename(const std::string& temporary, const std::string& destination, bool durable);

 private:
  // Wide enough for a descriptor and for a handle; -1 is neither.
  using Handle = intptr_t;
  static constexpr Handle kNone = -1;

  explicit NativeFile(Handle handle) : handle_(handle) {}
  Handle handle_ = kNone;
};

// The last failure of this thread in words.
std::string LastSystemError();

// The file behind a symbolic link, or the path itself.
std::string FinalTarget(const std::string& path);

// A name beside the destination that no other temporary file has, of this or another process.
std::string TemporaryName(const std::string& destination);

// Removes the file unless somebody holds it locked.
void RemoveIfAbandoned(const std::filesystem::path& path);

// Removes temporary files beside the destination that no living process holds locked.
void RemoveAbandonedFiles(const std::string& destination);

unsigned long ProcessId();

}  // namespace norv
