// Whole files as bytes, and bytes of a file or of memory at any place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/file.h"

namespace norv {

using Bytes = std::vector<uint8_t>;

// Throws a Failure that names the file when it cannot be read whole or does not fit into memory.
Bytes ReadBytes(const std::string& path);

// Replaces the file as a whole; throws when that failed, the old file still there.
void WriteBytes(const std::string& path, const Bytes& bytes);

// What a picture is read from.
class ByteSource {
 public:
  virtual ~ByteSource() = default;
  virtual int64_t Size() const = 0;
  // Up to `size` bytes from `position` on; returns how many there are. Never throws.
  virtual size_t Read(int64_t position, void* target, size_t size) = 0;
};

// What a picture is written to.
class ByteSink {
 public:
  virtual ~ByteSink() = default;
  // False when that failed. Never throws.
  virtual bool Write(int64_t position, const void* bytes, size_t size) = 0;
};

class MemorySource : public ByteSource {
 public:
  explicit MemorySource(std::span<const uint8_t> bytes) : bytes_(bytes) {}
  int64_t Size() const override { return static_cast<int64_t>(bytes_.size()); }
  size_t Read(int64_t position, void* target, size_t size) override;

 private:
  std::span<const uint8_t> bytes_;
};

class MemorySink : public ByteSink {
 public:
  bool Write(int64_t position, const void* bytes, size_t size) override;
  Bytes bytes;
};

class FileSource : public ByteSource {
 public:
  // Throws a Failure when the file cannot be opened.
  explicit FileSource(const std::string& path);
  int64_t Size() const override { return file_.Size(); }
  size_t Read(int64_t position, void* target, size_t size) override;

 private:
  FileIn file_;
};

class FileSink : public ByteSink {
 public:
  explicit FileSink(const std::string& path) : file_(path) {}
  bool Write(int64_t position, const void* bytes, size_t size) override;
  bool Failed() const { return file_.Failed(); }
  // As FileOut::Commit().
  bool Commit() { return file_.Commit(); }

 private:
  FileOut file_;
};

}  // namespace norv
