#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

#include "platform/memory.h"
#include "platform/native/block.h"

namespace norv {
namespace {

// The number behind a key in a file of the kernel's, or the file's only number when the key is empty; the largest value
// when the file does not say.
size_t ReadNumber(const std::string& path, const char* key) {
  FILE* file = std::fopen(path.c_str(), "r");
  if (!file) return SIZE_MAX;
  const size_t length = std::strlen(key);
  size_t value = SIZE_MAX;
  char line[256];
  while (value == SIZE_MAX && std::fgets(line, sizeof line, file))
    if (std::strncmp(line, key, length) == 0 && std::sscanf(line + length, "%zu", &value) != 1) value = SIZE_MAX;
  std::fclose(file);
  return value;
}

size_t Left(size_t limit, size_t used) {
  return limit == SIZE_MAX || used == SIZE_MAX ? SIZE_MAX : limit - std::min(limit, used);
}

// Where the files of a kind of group lie, and what they call its limit and the memory that it cannot give up; file
// pages count as free, for the kernel gives them up.
struct GroupKind {
  const char *folder, *limit, *used;
};
constexpr GroupKind kUnified = {"/sys/fs/cgroup", "/memory.max", "anon "};
constexpr GroupKind kOlder = {"/sys/fs/cgroup/memory", "/memory.limit_in_bytes", "total_rss "};

// The least that a group and those around it leave. Inside a container the path may not be visible; its own group is
// the topmost one there.
size_t LeftInGroups(const GroupKind& kind, std::string path) {
  size_t least = SIZE_MAX;
  for (;;) {
    const std::string folder = kind.folder + (path == "/" ? "" : path);
    least = std::min(least, Left(ReadNumber(folder + kind.limit, ""), ReadNumber(folder + "/memory.stat", kind.used)));
    if (path.empty() || path == "/") return least;
    path.erase(path.rfind('/'));
  }
}

// Each line of the file is NUMBER:KINDS:PATH, 0 and no kinds for the unified tree.
size_t LeftByGroups() {
  FILE* file = std::fopen("/proc/self/cgroup", "r");
  if (!file) return SIZE_MAX;
  size_t least = SIZE_MAX;
  char line[4096];
  while (std::fgets(line, sizeof line, file)) {
    line[std::strcspn(line, "\n")] = 0;
    const char *kinds = std::strchr(line, ':'), *path = kinds ? std::strchr(kinds + 1, ':') : nullptr;
    if (!path || path[1] != '/') continue;
    const std::string names(kinds + 1, path);
    if (names.empty()) least = std::min(least, LeftInGroups(kUnified, path + 1));
    if (names == "memory") least = std::min(least, LeftInGroups(kOlder, path + 1));
  }
  std::fclose(file);
  return least;
}

// The largest value when the system does not say.
size_t AddressSpace() {
  const size_t pages = ReadNumber("/proc/self/statm", "");
  return pages == SIZE_MAX ? SIZE_MAX : pages * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

size_t LeftByAddressSpace() {
  rlimit limit;
  if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return SIZE_MAX;
  const size_t used = AddressSpace();
  return used == SIZE_MAX ? SIZE_MAX : Left(limit.rlim_cur, used);
}

// Large blocks go back to the system when they are freed; the C library would begin to keep them after the first one,
// and a run would take more than was estimated for it.
void ReturnLargeBlocks() {
#ifdef M_MMAP_THRESHOLD
  static const bool told = mallopt(M_MMAP_THRESHOLD, 4 << 20) != 0 && mallopt(M_TRIM_THRESHOLD, 1 << 20) != 0;
  static_cast<void>(told);
#endif
}

}  // namespace

size_t AvailableMemory() {
  const size_t kilobytes = ReadNumber("/proc/meminfo", "MemAvailable:");
  const size_t machine = kilobytes == SIZE_MAX ? SIZE_MAX : kilobytes * 1024;
  return std::min({machine, LeftByGroups(), LeftByAddressSpace()});
}

uint64_t PeakMemory() {
  const size_t kilobytes = ReadNumber("/proc/self/status", "VmHWM:");
  if (kilobytes != SIZE_MAX) return uint64_t{kilobytes} * 1024;
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<uint64_t>(usage.ru_maxrss) * 1024;
}

void ForgetPeakMemory() {
  FILE* file = std::fopen("/proc/self/clear_refs", "w");
  if (!file) return;
  std::fputs("5", file);  // proc(5): the peak begins again at what is held now
  std::fclose(file);
}

AddressLimit::AddressLimit([[maybe_unused]] int64_t more) {
#ifndef NORV_SANITIZED
  rlimit limit;
  const size_t used = AddressSpace();
  if (used == SIZE_MAX || getrlimit(RLIMIT_AS, &limit) != 0) return;
  before_ = limit.rlim_cur;
  limit.rlim_cur = std::min<rlim_t>(limit.rlim_cur, used + static_cast<uint64_t>(more));
  set_ = setrlimit(RLIMIT_AS, &limit) == 0;
#endif
}

AddressLimit::~AddressLimit() {
  rlimit limit;
  if (!set_ || getrlimit(RLIMIT_AS, &limit) != 0) return;
  limit.rlim_cur = before_;
  setrlimit(RLIMIT_AS, &limit);
}

void* TakeBlock(size_t size) {
  ReturnLargeBlocks();
  return std::aligned_alloc(kAlignment, size);
}

void FreeAligned(void* memory) { std::free(memory); }

}  // namespace norv
