// Bytes of a file or of memory at any place: what picture formats are read from and written to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "kit/formats/bytes.h"
#include "platform/file.h"

namespace norv {

struct ByteSource {
  int64_t size = 0;  // bytes that there are
  // Up to `bytes` bytes from `position` on; returns how many there are. Never throws.
  std::function<size_t(int64_t position, void* target, size_t bytes)> read;
};

// False when that failed. Never throws.
using ByteSink = std::function<bool(int64_t position, const void* source, size_t bytes)>;

// The whole source. Throws a Failure when that cannot be read or does not fit into memory.
Bytes AllBytes(const ByteSource& source);

// The memory, or the file to be written, outlives what is returned.
ByteSource FromMemory(std::span<const uint8_t> bytes);
ByteSink ToMemory(Bytes& bytes);
ByteSink ToFile(FileOut& file);

// Throws a Failure when the file cannot be opened. What passes once (streams.h) is read whole and held.
ByteSource FromFile(const std::string& path);

}  // namespace norv
