// Raw little-endian fields and arrays in and out of files. A file is replaced as a whole or not at all.
//
// FileIn and FileOut answer to the same two calls, Field and Array, so that one function per format serves reading and
// writing alike. platform/header.h says how the start of a format is described.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

namespace norv {

// Elements of raw files: plain numbers of the machine's own (little-endian) layout.
template <typename T>
concept RawElement = std::is_arithmetic_v<T>;

// Reads a file, from its start unless told otherwise. What is read behind its end (or behind a read error) is zeros,
// and Complete() says so.
class FileIn {
 public:
  // Opens for reading; a file that cannot be opened leaves IsOpen() false and the reason in Reason().
  explicit FileIn(const std::string& path);
  ~FileIn();
  FileIn(const FileIn&) = delete;
  FileIn& operator=(const FileIn&) = delete;

  bool IsOpen() const;
  // Bytes in the file when it was opened.
  int64_t Size() const;
  const std::string& Path() const;
  // Why the file could not be opened, in the system's words.
  const std::string& Reason() const;

  template <RawElement T>
  void Field(T& value) {
    Read(&value, sizeof value);
  }
  template <RawElement T>
  void Array(T* elements, size_t n) {
    Read(elements, n * sizeof(T));
  }
  // Passes over bytes without reading them.
  void Skip(int64_t bytes);
  // The next bytes come from this distance from the file's start. Nothing happens where they come from there already,
  // so that what is read from front to back may come from a pipe too.
  void Seek(int64_t position);
  bool CanSeek() const;

  // False once something was asked for that the file does not hold.
  bool Complete() const;
  // Warns on standard error, naming the file, when it ended early.
  void WarnIfShort() const;
  void WarnEndsEarly() const;

 private:
  void Read(void* bytes, size_t size);

  struct State;
  std::unique_ptr<State> state_;
};

enum class Durability {
  durable,  // on the disk before the new name stands
  scratch,  // a file of this run only: never flushed to the disk
};

// Writes a file beside its destination under a temporary name that is locked while written; Commit() flushes it and
// renames it over the destination, so that a crash, a kill or a full disk leaves the old file or the new one. What
// other runs left behind half-written, and nobody holds locked, is removed on the way. A destination that exists and is
// no regular file (a device, a pipe) is written directly.
class FileOut {
 public:
  explicit FileOut(const std::string& path, Durability durability = Durability::durable);
  // Not committed: the temporary file goes, the old file stays.
  ~FileOut();
  FileOut(const FileOut&) = delete;
  FileOut& operator=(const FileOut&) = delete;

  bool IsOpen() const;

  // Of floats that are no number all become the same one: which one an operation gives is up to the processor, and to
  // the order of the operands, which every compiled vector level may choose.
  template <RawElement T>
  void Field(const T& value) {
    Array(&value, 1);
  }
  template <RawElement T>
  void Array(const T* elements, size_t n) {
    if constexpr (std::is_same_v<T, float>)
      WriteFloats(elements, n);
    else
      Write(elements, n * sizeof(T));
  }

  // The next bytes go to this distance from the file's start; nothing happens where they go there already. Bytes left
  // out before them are zeros.
  void Seek(int64_t position);
  // False for a pipe or a terminal as the destination.
  bool CanSeek() const;
  // A write has failed, or the file is not open: Commit() will say why, and what is still written is lost.
  bool Failed() const;

  // True when every byte has reached the destination. Otherwise the reason is on standard error and the old file is as
  // it was. Call once.
  bool Commit();

 private:
  void Write(const void* bytes, size_t size);
  void WriteFloats(const float* floats, size_t n);

  struct State;
  std::unique_ptr<State> state_;
};

// Whether the path exists and is neither a regular file nor a directory.
bool IsSpecialFile(const std::string& path);

// Whether the file is there and must not be written: by the system's word, for its superuser by the owner's bits.
bool IsReadOnly(const std::string& path);

// Whether both are there and are one file, by whatever names and links.
bool IsSameFile(const std::string& a, const std::string& b);

// Deletes the file; a file that does not exist counts as deleted.
bool RemoveFile(const std::string& path);

}  // namespace norv
