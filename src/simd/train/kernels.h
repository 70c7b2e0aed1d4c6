// What training dense layers sample by sample needs of the machine's vectors.
//
// Every sum has the order of the dot product in simd/evaluate/kernels.h, which the contract with the graphical program
// gives; that no multiply-add is fused, and that all levels give the same bits, is our own rule.
//
// A weight is read once a sample, for its sum and its step together. A sample's steps are known only after its sums, so
// that the first layer's wait for the sweep that evaluates the next sample; a later layer's are taken where its weights
// carry the deltas down to the layer below.
#pragma once

#include <cstdint>

#include "simd/activation/kinds.h"

namespace norv {

enum class VectorLevel;

// Counts of units and lengths of rows are padded to whole blocks of this by the owner; blocks of memory are aligned to
// 64 bytes. What stands in the padding of an array may be anything, and so is what is computed from it.
inline constexpr int32_t kTrainBlock = 16;

// How a step changes the weights: not at all; W += (-step) X; V = momentum V + (-step) X, then W += V.
enum class TrainUpdate : int32_t { none, plain, momentum };

// z = dot(input, W) + bias of each unit.
struct TrainSums {
  float* W;  // kernel columns: W[i * stride + u]; kernel rows: W[u * stride + i]; u counts units, i inputs
  int32_t inputs;
  int32_t stride;
  const float* input;  // columns: null where only the weights are updated; rows: aligned
  const float* bias;
  float* z;  // out
};

// The same, after the step of the sample before.
struct TrainSweep : TrainSums {
  float* V;  // the velocities, laid out as W; null without momentum
  TrainUpdate update;
  float momentum;
  const float* step;      // nu delta of the sample before, one a unit
  const float* previous;  // inputs of the sample before
};

// delta = slope * sum over k of W[k] deltaAbove[k], in the order of k; then the steps of these weights and of the
// layer's own biases.
struct TrainDeltas {
  float *W, *V;  // rows of the layer above, one a unit of it; updated after their use. V: null without momentum
  int32_t stride;
  int32_t units;  // of the layer above
  const float *deltaAbove, *stepAbove;
  const float* a;       // of this layer's units: the inputs of the layer above
  const double* slope;  // df(z): exact, or 38 bits of it as activateLogistic makes them
  const float* z;       // null where the slopes are exact; else this layer's z, from which the exact slope is made for
                        // a delta that 38 bits do not decide
  float bound;          // deltas are clipped to -bound .. bound; 0: to nothing
  float nu, momentum;
  TrainUpdate update;  // plain or momentum
  float* delta;        // out
  float* step;         // out: nu delta
  float* bias;         // updated: -= step, or += vb
  float* vb;           // updated with momentum: vb = momentum vb - step
};

// a = (float) f(z) and slope = df(z) of n units; writes whole blocks, so up to kTrainBlock - 1 elements more.
using TrainActivation = void (*)(const float* z, int32_t n, float* a, double* slope);

struct TrainKernels {
  VectorLevel level;

  // Units begin .. end - 1, both multiples of kTrainBlock; any end for rows, which take them by fours.
  void (*columns)(const TrainSweep& sweep, int32_t begin, int32_t end);
  void (*rows)(const TrainSums& sums, int32_t begin, int32_t end);
  void (*deltas)(const TrainDeltas& deltas, int32_t begin, int32_t end);
  // By activation kind, null for kind 0.
  const TrainActivation (&activate)[kActivationKinds];
  // That of kind 1, faster: its slopes have 38 bits, which nearly always decide how a delta is rounded
  // (TrainDeltas::z). For layers that have no other kind.
  TrainActivation activateLogistic;
};

// The table of a level at or below the machine's, and that of the level in use.
const TrainKernels& TrainKernelsOf(VectorLevel level);
const TrainKernels& ActiveTrainKernels();

}  // namespace norv
