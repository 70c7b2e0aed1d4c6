// What the denoisers need of the machine's vectors: patches of a plane, side x side values each.
//
// A patch's values, its taps, are counted scanline by scanline. Rows of a plane are `stride` floats apart and may be
// read and written a tile beyond their end. Arithmetic in single precision in the order written, so that all levels
// give the same bits.
#pragma once

#include <cstdint>

namespace norv {

enum class VectorLevel;

// Neighbouring patches that are worked on side by side: patch x of a tile begins x columns behind the first one.
inline constexpr int32_t kPatchesPerTile = 16;

// Taps and components are padded to multiples of this, with zeros.
inline constexpr int32_t kPatchBlock = 8;

struct PatchKernels {
  VectorLevel level;

  // Coefficients of a tile of patches in `count` components, a multiple of kPatchBlock:
  //   out[k][x] = the sum of basis[t][k] * tap t of patch x, t in order, less mean[k]
  void (*analyse)(const float* plane, int64_t stride, int32_t side, const float* basis, const float* mean,
                  int32_t count, float* out);

  // Both shrink `count` rows of coefficients of a tile, weigh each patch by the inverse of 1 plus what is left of it,
  // and return how many rows are not all zero, their numbers in `active`.
  // Magnitudes up to the threshold, and NaN, become 0; those above it count 1.
  int32_t (*threshold)(float* rows, int32_t count, float threshold, float* weights, int32_t* active);
  // Scaled by f = p^2 / (p^2 + variance) with the coefficients p of the guide; each counts f^2.
  int32_t (*shrink)(float* rows, int32_t count, const float* guide, float variance, float* weights, int32_t* active);

  // Back to patches, added with their weights to the sums of the plane (and the weights to those of the weights):
  //   tap t of patch x = mean[t] + the sum of basis[k][t] * rows[k][x], k in the order of `active`
  // The basis' rows and the mean are side^2 taps, padded.
  void (*synthesise)(const float* rows, const int32_t* active, int32_t activeCount, const float* basis,
                     const float* mean, int32_t side, const float* weights, float* sums, float* sumsOfWeights,
                     int64_t stride);

  // out[x] = the sum of (tap of patch x of the candidates - tap of the patch)^2, taps in order, for x < count, rounded
  // up to a whole tile. A row of the candidates' plane is read as far.
  void (*distances)(const float* patch, const float* candidates, int64_t stride, int32_t side, int32_t count,
                    float* out);
};

// The table of a level at or below the machine's, and that of the level in use.
const PatchKernels& PatchKernelsOf(VectorLevel level);
const PatchKernels& ActivePatchKernels();

}  // namespace norv
