#include "platform/memory.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#ifdef _WIN32
#include <malloc.h>
#include <windows.h>
#endif

namespace norv {
namespace {

// Below this nobody asks the system how much is left.
constexpr size_t kSmall = size_t{16} << 20;

#ifndef _WIN32

// The number behind a key in a file of the kernel's, or the file's only number when the key is empty; the largest value
// when the file does not say.
size_t ReadNumber(const char* path, const char* key) {
  FILE* file = std::fopen(path, "r");
  if (!file) return SIZE_MAX;
  const size_t length = std::strlen(key);
  size_t value = SIZE_MAX;
  char line[256];
  while (value == SIZE_MAX && std::fgets(line, sizeof line, file))
    if (std::strncmp(line, key, length) == 0 && std::sscanf(line + length, "%zu", &value) != 1) value = SIZE_MAX;
  std::fclose(file);
  return value;
}

#endif

}  // namespace

#ifdef _WIN32

size_t AvailableMemory() {
  MEMORYSTATUSEX status = {};
  status.dwLength = sizeof status;
  return GlobalMemoryStatusEx(&status) ? static_cast<size_t>(status.ullAvailPhys) : SIZE_MAX;
}

#else

size_t AvailableMemory() {
  const size_t kilobytes = ReadNumber("/proc/meminfo", "MemAvailable:");
  const size_t available = kilobytes == SIZE_MAX ? SIZE_MAX : kilobytes * 1024;
  // A container may have less than its machine; file pages count as free, for the kernel gives them up.
  const size_t limit = ReadNumber("/sys/fs/cgroup/memory.max", "");
  const size_t used = ReadNumber("/sys/fs/cgroup/memory.stat", "anon ");
  if (limit == SIZE_MAX || used == SIZE_MAX) return available;
  return std::min(available, limit > used ? limit - used : 0);
}

#endif

void* AllocateAligned(size_t bytes) {
  if (bytes > SIZE_MAX / 2) return nullptr;
  const size_t size = bytes == 0 ? kAlignment : (bytes + kAlignment - 1) / kAlignment * kAlignment;
  if (size > kSmall && size > AvailableMemory()) return nullptr;
#ifdef _WIN32
  return _aligned_malloc(size, kAlignment);
#else
  return std::aligned_alloc(kAlignment, size);
#endif
}

void FreeAligned(void* memory) {
#ifdef _WIN32
  _aligned_free(memory);
#else
  std::free(memory);
#endif
}

}  // namespace norv
