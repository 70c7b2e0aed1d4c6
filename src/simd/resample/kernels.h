// Weighted sums of rows, and lines split into their phases: what filters and their adjoints are made of.
//
// Any lengths and alignments, 0 included; arithmetic in single precision in the order written.
#pragma once

#include <cstdint>

namespace norv {

enum class VectorLevel;

struct ResampleKernels {
  VectorLevel level;

  // out[j] = the sum of taps[i] * rows[i][j] for i < count, in that order from 0
  void (*combineRows)(float* out, const float* const* rows, const float* taps, int64_t count, int64_t n);

  // phases[p * stride + j] = line[f * j + p] for p < f, j < n; and back
  void (*splitPhases)(float* phases, int64_t stride, const float* line, int64_t f, int64_t n);
  void (*joinPhases)(float* line, const float* phases, int64_t stride, int64_t f, int64_t n);
};

// The table of a level at or below the machine's, and that of the level in use.
const ResampleKernels& ResampleKernelsOf(VectorLevel level);
const ResampleKernels& ActiveResampleKernels();

}  // namespace norv
