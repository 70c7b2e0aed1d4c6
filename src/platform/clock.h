// Elapsed wall-clock time.
#pragma once

#include <cstdint>

namespace norv {

// Milliseconds since an arbitrary fixed instant, never set back. Wraps like a 32-bit counter: take differences.
int32_t Clock();

// Seconds since an arbitrary fixed instant, for progress and measurements.
double Seconds();

// What all threads of the process have used of processors so far.
double ProcessorSeconds();
// The same of this thread.
double ThreadSeconds();

}  // namespace norv
