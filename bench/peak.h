// The machine's own limit of separate multiplications and additions, by vector width.
#pragma once

#include <cstdint>

namespace norv {

// Runs so many rounds of kPeakOperations floating-point operations each in registers.
namespace narrow {
extern const int64_t kPeakOperations;
float PeakRounds(int64_t rounds);
}  // namespace narrow
namespace wide {
extern const int64_t kPeakOperations;
float PeakRounds(int64_t rounds);
}  // namespace wide

}  // namespace norv
