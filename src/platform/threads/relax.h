// A moment's rest for a thread that is waiting for a value to change: the processor's other thread gets on, and less
// power is used.
#pragma once

namespace norv {

inline void RelaxProcessor() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  asm volatile("yield");
#endif
}

}  // namespace norv
