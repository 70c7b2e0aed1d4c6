#include "kit/formats/bytes.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "kit/failure.h"
#include "platform/memory.h"

namespace norv {
namespace {

// How many of `size` bytes from `position` on a store of `held` bytes has.
size_t Available(int64_t held, int64_t position, size_t size) {
  if (position < 0 || position >= held) return 0;
  return std::min(size, static_cast<size_t>(held - position));
}

}  // namespace

Bytes ReadBytes(const std::string& path) {
  FileIn in(path);
  if (!in.IsOpen()) Fail("cannot open %s: %s", path.c_str(), in.Reason().c_str());
  if (static_cast<size_t>(in.Size()) > AvailableMemory()) Fail("%s does not fit into memory", path.c_str());
  Bytes bytes(static_cast<size_t>(in.Size()));
  in.Array(bytes.data(), bytes.size());
  if (!in.Complete()) Fail("%s cannot be read to its end", path.c_str());
  return bytes;
}

void WriteBytes(const std::string& path, const Bytes& bytes) {
  FileOut out(path);
  out.Array(bytes.data(), bytes.size());
  if (!out.Commit()) throw SaidFailure();
}

size_t MemorySource::Read(int64_t position, void* target, size_t size) {
  const size_t part = Available(Size(), position, size);
  if (part > 0) std::memcpy(target, bytes_.data() + position, part);
  return part;
}

bool MemorySink::Write(int64_t position, const void* source, size_t size) {
  const size_t end = static_cast<size_t>(position) + size;
  try {
    if (end > bytes.size()) bytes.resize(end);
  } catch (const std::exception&) {
    return false;
  }
  if (size > 0) std::memcpy(bytes.data() + position, source, size);
  return true;
}

FileSource::FileSource(const std::string& path) : file_(path) {
  if (!file_.IsOpen()) Fail("cannot open %s: %s", path.c_str(), file_.Reason().c_str());
}

size_t FileSource::Read(int64_t position, void* target, size_t size) {
  const size_t part = Available(Size(), position, size);
  file_.Seek(position);
  file_.Array(static_cast<uint8_t*>(target), part);
  return file_.Complete() ? part : 0;
}

bool FileSink::Write(int64_t position, const void* bytes, size_t size) {
  file_.Seek(position);
  file_.Array(static_cast<const uint8_t*>(bytes), size);
  return !file_.Failed();
}

}  // namespace norv
