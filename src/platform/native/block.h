// The system's own allocation behind platform/memory.h.
#pragma once

#include <cstddef>
#include <cstdint>

namespace norv {

// size: a multiple of kAlignment, not 0. Null when the system has none; goes back by FreeAligned().
void* TakeBlock(size_t size);

// While it lives, the process gets so many bytes more of address space and no more, where the system can. Without an
// effect under sanitizers, whose own memory is beyond any limit.
class AddressLimit {
 public:
  explicit AddressLimit(int64_t more);
  ~AddressLimit();
  AddressLimit(const AddressLimit&) = delete;
  AddressLimit& operator=(const AddressLimit&) = delete;

 private:
  [[maybe_unused]] uint64_t before_ = 0;
  [[maybe_unused]] bool set_ = false;
};

}  // namespace norv
