// What evaluating a network needs of the machine's vectors.
#pragma once

#include <cstdint>

#include "simd/activation/kinds.h"

namespace norv {

enum class VectorLevel;

// Evaluation works on blocks of this many neighbouring pixels; rows of a block are this many floats apart.
inline constexpr int32_t kPixelsPerBlock = 64;

// Units that a layer's kernel takes at a time; packed weights and output rows are padded to whole tiles.
inline constexpr int32_t kUnitsPerTile = 4;

// A row of functions of single floats: y[i] = (float) f((double) x[i]), i < n. x and y may be the same.
using RowFunction = void (*)(const float* x, float* y, int64_t n);

struct EvaluateKernels {
  VectorLevel level;

  // Weighted sums of a layer for the first `pixels` pixels of a block, rounded up to whole vectors:
  //   z[u][p] = dot(x[..][p], w[u][..]) + b[u]
  // dot, in the order that the contract with the graphical program gives: eight partial sums, sum k of the products
  // 8j + k of whole blocks of eight, products of the tail added one by one to sum 0, then sums 1 to 7 added to it in
  // that order. All in single precision, all from +0.
  // x: `inputs` rows of kPixelsPerBlock floats, aligned to whole vectors; z: units rounded up to whole tiles such rows.
  // weights: for every tile of kUnitsPerTile units, for each index i in the order 0, 8, 16 .. of whole blocks, then the
  // tail, then 1, 9, 17 .., then 2, 10 .. to 7, 15 ..: the weights i of the tile's units; then their biases.
  void (*evaluateLayer)(const float* weights, int32_t inputs, int32_t units, const float* x, float* z, int32_t pixels);

  // f by activation kind, null for kind 0.
  const RowFunction (&activation)[kActivationKinds];
};

// The table of a level at or below the machine's, and that of the level in use.
const EvaluateKernels& EvaluateKernelsOf(VectorLevel level);
const EvaluateKernels& ActiveEvaluateKernels();

}  // namespace norv
