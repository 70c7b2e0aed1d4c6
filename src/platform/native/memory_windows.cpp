#include <algorithm>
#include <cstdint>
#include <malloc.h>
// The second needs the first before it.
// clang-format off
#include <windows.h>
#include <psapi.h>
// clang-format on

#include "platform/memory.h"
#include "platform/native/block.h"

namespace norv {

size_t AvailableMemory() {
  MEMORYSTATUSEX status = {};
  status.dwLength = sizeof status;
  if (!GlobalMemoryStatusEx(&status)) return SIZE_MAX;
  // What the system still promises, and what this process can still address, may be less than what is free.
  return static_cast<size_t>(std::min({status.ullAvailPhys, status.ullAvailPageFile, status.ullAvailVirtual}));
}

uint64_t PeakMemory() {
  PROCESS_MEMORY_COUNTERS counters = {};
  return K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters) ? counters.PeakWorkingSetSize : 0;
}

void ForgetPeakMemory() {}

AddressLimit::AddressLimit(int64_t) {}
AddressLimit::~AddressLimit() {}

void* TakeBlock(size_t size) { return _aligned_malloc(size, kAlignment); }

void FreeAligned(void* memory) { _aligned_free(memory); }

}  // namespace norv
