// Memory for planes and vectors: aligned, and refused in time instead of being taken back by the system later.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace norv {

// Every plane and weight block starts on this boundary, so that the widest vectors load aligned.
inline constexpr size_t kAlignment = 64;

// Uninitialised memory aligned to kAlignment, its size rounded up to whole vectors; null when the machine does not have
// that much left (the system itself would promise it and kill the process later).
void* AllocateAligned(size_t bytes);
void FreeAligned(void* memory);

// Bytes that new allocations can still fill without swapping: what the machine, the limits of the groups that the
// process belongs to, and the limit on its own address space leave, whichever is least.
size_t AvailableMemory();

// The most bytes of the machine's memory that the process has held since it began or since ForgetPeakMemory().
uint64_t PeakMemory();
void ForgetPeakMemory();  // where the system can

struct AlignedDelete {
  void operator()(void* memory) const { FreeAligned(memory); }
};

// Scratch of n trivially copyable elements, contents undefined. Throws std::bad_alloc.
template <typename T>
using AlignedArray = std::unique_ptr<T[], AlignedDelete>;

template <typename T>
AlignedArray<T> MakeAligned(size_t n) {
  void* memory = n > static_cast<size_t>(-1) / 2 / sizeof(T) ? nullptr : AllocateAligned(n * sizeof(T));
  if (!memory) throw std::bad_alloc();
  return AlignedArray<T>(static_cast<T*>(memory));
}

// The same, filled with zeros.
template <typename T>
AlignedArray<T> Zeros(int64_t n) {
  auto array = MakeAligned<T>(static_cast<size_t>(n));
  std::fill_n(array.get(), n, T{0});
  return array;
}

}  // namespace norv
