// platform/memory for fuzzers: a machine with little memory, so that what a header claims is refused soon. Linked
// before the library, whose own copy then stays out.
#include "platform/memory.h"

#include <cstdlib>

#include "platform/native/block.h"

namespace norv {

namespace {

constexpr size_t kLittle = size_t{16} << 20;

}  // namespace

size_t AvailableMemory() { return kLittle; }

uint64_t PeakMemory() { return 0; }
void ForgetPeakMemory() {}

// The sanitizers need the address space for themselves.
AddressLimit::AddressLimit(int64_t) {}
AddressLimit::~AddressLimit() {}

void* AllocateAligned(size_t bytes) {
  if (bytes > kLittle) return nullptr;
  return std::aligned_alloc(kAlignment, bytes == 0 ? kAlignment : (bytes + kAlignment - 1) / kAlignment * kAlignment);
}

void FreeAligned(void* memory) { std::free(memory); }

}  // namespace norv
