// Colours to other colours, a plane a channel.
#pragma once

#include <cstdint>

namespace norv {

enum class VectorLevel;

struct ColourKernels {
  VectorLevel level;

  // to[k][i] = matrix[k][0] from[0][i] + matrix[k][1] from[1][i] + matrix[k][2] from[2][i] in double precision, added
  // in this order, rounded; for three planes of n values, which may be the same ones.
  void (*linear)(float* const* to, const float* const* from, const double (*matrix)[3], int32_t n);
  // to[k][i] = 255 - from[k][i]
  void (*invert)(float* const* to, const float* const* from, int32_t n);
};

// The table of a level at or below the machine's, and that of the level in use.
const ColourKernels& ColourKernelsOf(VectorLevel level);
const ColourKernels& ActiveColourKernels();

}  // namespace norv
