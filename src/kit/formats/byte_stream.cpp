#include "kit/formats/byte_stream.h"

#include <algorithm>
#include <cstring>
#include <exception>

#include "kit/failure.h"
#include "kit/formats/streams.h"
#include "platform/memory.h"

namespace norv {
namespace {

// How many of `bytes` bytes from `position` on a store of `held` bytes has.
size_t Available(int64_t held, int64_t position, size_t bytes) {
  if (position < 0 || position >= held) return 0;
  return std::min(bytes, static_cast<size_t>(held - position));
}

}  // namespace

Bytes AllBytes(const ByteSource& source) {
  if (static_cast<size_t>(source.size) > AvailableMemory()) Fail("the file does not fit into memory");
  Bytes bytes(static_cast<size_t>(source.size));
  if (source.read(0, bytes.data(), bytes.size()) != bytes.size()) Fail("the file cannot be read to its end");
  return bytes;
}

ByteSource FromMemory(std::span<const uint8_t> memory) {
  const int64_t size = static_cast<int64_t>(memory.size());
  return {size, [memory, size](int64_t position, void* target, size_t bytes) {
            const size_t part = Available(size, position, bytes);
            if (part > 0) std::memcpy(target, memory.data() + position, part);
            return part;
          }};
}

ByteSource FromFile(const std::string& path) {
  if (IsStream(path)) return FromMemory(AllOfStream(path));
  const auto file = std::make_shared<FileIn>(path);
  if (!file->IsOpen()) Fail("cannot open %s: %s", path.c_str(), file->Reason().c_str());
  return {file->Size(), [file](int64_t position, void* target, size_t bytes) {
            const size_t part = Available(file->Size(), position, bytes);
            file->Seek(position);
            file->Array(static_cast<uint8_t*>(target), part);
            return file->Complete() ? part : 0;
          }};
}

ByteSink ToMemory(Bytes& memory) {
  return [&memory](int64_t position, const void* source, size_t bytes) {
    const size_t end = static_cast<size_t>(position) + bytes;
    try {
      if (end > memory.size()) memory.resize(end);
    } catch (const std::exception&) {
      return false;
    }
    if (bytes > 0) std::memcpy(memory.data() + position, source, bytes);
    return true;
  };
}

ByteSink ToFile(FileOut& file) {
  return [&file](int64_t position, const void* source, size_t bytes) {
    file.Seek(position);
    file.Array(static_cast<const uint8_t*>(source), bytes);
    return !file.Failed();
  };
}

}  // namespace norv
