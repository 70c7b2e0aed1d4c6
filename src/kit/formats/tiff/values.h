// Samples of any precision as numbers.
#pragma once

#include "kit/formats/tiff/layout.h"

namespace norv {

// Samples without gaps between, of which those at first, first + step, first + 2 step ... are meant.
struct SampleRun {
  const uint8_t* source;
  int32_t bits;
  SampleKind kind;
  size_t first, step;
};

// `count` of them unfolded to all of 8 or 16 bits, or to floats where 0 to 1 is black to white; of signed integers the
// smallest is black. T: uint8_t for up to 8 bits, uint16_t for up to 16, else float; every `step`th of them is written.
template <typename T>
void UnfoldSamples(const SampleRun& run, size_t count, T* target, size_t step);

// Just the number that sample i of the run is; of unsigned integers of up to 32 bits.
uint32_t IntegerOf(const SampleRun& run, size_t i);

}  // namespace norv
