#include "platform/memory.h"

#include <cstdint>

#include "platform/native/block.h"

namespace norv {
namespace {

// Below this nobody asks the system how much is left.
constexpr size_t kSmall = size_t{16} << 20;

}  // namespace

void* AllocateAligned(size_t bytes) {
  if (bytes > SIZE_MAX / 2) return nullptr;
  const size_t size = bytes == 0 ? kAlignment : (bytes + kAlignment - 1) / kAlignment * kAlignment;
  if (size > kSmall && size > AvailableMemory()) return nullptr;
  return TakeBlock(size);
}

}  // namespace norv
