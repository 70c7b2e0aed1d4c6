// What training a dense layer sample by sample needs of the machine's vectors. Results are the same bits at every
// level.
//
// Every weight is read for the sum and for its step in one go. The first layer's step waits for the sweep that
// evaluates the next sample, as its sums come first; a later layer's is taken where its weights carry the deltas down.
#pragma once

#include <cstdint>

namespace norv {

enum class VectorLevel;

// Counts of units and lengths of rows are padded to whole blocks of this by the owner; blocks of memory are aligned to
// 64 bytes. What stands in the padding of an array may be anything, and so is what is computed from it.
inline constexpr int32_t kTrainBlock = 16;

// How a step changes the weights: not at all; W += (-step) X; V = momentum V + (-step) X, then W += V.
enum class TrainUpdate : int32_t { none, plain, momentum };

// z = dot(input, W) + bias, one a unit, summed in eight lane sums, tail to the first, lanes in order.
struct TrainSums {
  float* W;  // columns: W[i * stride + u]; rows: W[u * stride + i]. u counts units, i inputs.
  int32_t inputs;
  int32_t stride;
  const float* input;  // columns: null where only the weights are updated. Rows: aligned.
  const float* bias;
  float* z;  // out
};

// The same with the step of the sample before.
struct TrainSweep : TrainSums {
  float* V;  // as W
  TrainUpdate update;
  float momentum;
  const float* step;      // nu times delta of the sample before, one a unit
  const float* previous;  // inputs of the sample before
};

struct TrainDeltas {
  float *W, *V;  // rows of the layer above, updated after their use
  int32_t stride;
  int32_t units;  // of the layer above
  const float *deltaAbove, *stepAbove;
  const float* a;       // of this layer's units: the inputs of the layer above
  const double* slope;  // df(z)
  const float* z;       // null: the slopes are exact. Else they come from activateLogistic, and these are its z.
  float bound;          // 0: none
  float nu, momentum;
  TrainUpdate update;  // plain or momentum
  float* delta;        // out: df(z) times the sum of W delta in unit order, clipped
  float* step;         // out: nu times delta
  float* bias;         // updated: -= step, or += vb
  float* vb;           // velocity = momentum velocity - step
};

// a = (float) f(z) and slope = df(z) of n units; writes whole blocks, so up to kTrainBlock - 1 elements more.
using TrainActivation = void (*)(const float* z, int32_t n, float* a, double* slope);

struct TrainKernels {
  VectorLevel level;

  // Units begin .. end - 1, both multiples of kTrainBlock; any end for rows, which take them by fours.
  void (*columns)(const TrainSweep& sweep, int32_t begin, int32_t end);
  void (*rows)(const TrainSums& sums, int32_t begin, int32_t end);
  void (*deltas)(const TrainDeltas& deltas, int32_t begin, int32_t end);
  const TrainActivation* activate;  // by kind, 1 to 17
  // The same for kind 1 with slopes of 38 bits, which nearly always decide how a delta is rounded: `deltas` finds out
  // when they do not and takes the exact ones. For layers of this kind alone; z as in `deltas`.
  TrainActivation activateLogistic;
};

// The table of a level at or below the machine's, and that of the level in use.
const TrainKernels& TrainKernelsOf(VectorLevel level);
const TrainKernels& ActiveTrainKernels();

}  // namespace norv
