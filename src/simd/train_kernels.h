// What training a dense layer sample by sample needs of the machine's vectors. Results are the same bits at every
// level.
//
// A layer's weights are updated late: the step that follows from one sample is added to the weights in the same sweep
// that evaluates the next one, so that every weight is read and written once a sample.
#pragma once

#include <cstdint>

namespace norv {

// Counts of units and lengths of rows are padded to whole blocks of this by the owner; blocks of memory are aligned to
// 64 bytes. What stands in the padding of an array may be anything, and so is what is computed from it.
inline constexpr int32_t kTrainBlock = 16;

// How the pending step changes the weights: not at all; W += (-step) X; V = momentum V + (-step) X, then W += V.
enum class TrainUpdate : int32_t { none, plain, momentum };

struct TrainSweep {
  // columns: W[i * stride + u]; rows: W[u * stride + i], u counts units, i inputs. V the same.
  float* W;
  float* V;
  int32_t inputs;
  int32_t stride;
  TrainUpdate update;
  float momentum;
  const float* step;      // nu times delta of the previous sample, one a unit
  const float* previous;  // inputs of the previous sample
  const float* input;     // inputs of this sample; null: only the weights are updated. Rows: both aligned.
  const float* bias;
  float* z;  // out: dot(input, W) + bias, one a unit, summed in eight lane sums, tail to the first, lanes in order
};

struct TrainDeltas {
  const float* W;  // rows of the layer above
  int32_t stride;
  int32_t units;  // of the layer above
  const float* deltaAbove;
  const double* slope;  // df(z) of this layer's units
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
  // Units begin .. end - 1, both multiples of kTrainBlock; any end for rows, which take them by fours.
  void (*columns)(const TrainSweep& sweep, int32_t begin, int32_t end);
  void (*rows)(const TrainSweep& sweep, int32_t begin, int32_t end);
  void (*deltas)(const TrainDeltas& deltas, int32_t begin, int32_t end);
  const TrainActivation* activate;  // by kind, 1 to 17
  // The same for kind 1 with slopes of 38 bits, which nearly always decide how a delta is rounded: `deltas` finds out
  // when they do not and takes the exact ones. For layers of this kind alone; z as in `deltas`.
  TrainActivation activateLogistic;
};

// Those of the active level.
const TrainKernels& ActiveTrainKernels();

}  // namespace norv
