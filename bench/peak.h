// The machine's own limit of separate multiplications and additions, by the bytes of a vector.
#pragma once

#include <cstdint>

namespace norv {

// Runs so many rounds of kPeakOperations floating-point operations each in registers.
#define NORV_PEAK(bytes)                  \
  namespace bytes_##bytes {               \
    extern const int64_t kPeakOperations; \
    float PeakRounds(int64_t rounds);     \
  }
NORV_PEAK(16)
NORV_PEAK(32)
NORV_PEAK(64)
#undef NORV_PEAK

}  // namespace norv
