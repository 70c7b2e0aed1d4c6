// The system's own allocation behind platform/memory.h.
#pragma once

#include <cstddef>

namespace norv {

// size: a multiple of kAlignment, not 0. Null when the system has none; goes back by FreeAligned().
void* TakeBlock(size_t size);

}  // namespace norv
