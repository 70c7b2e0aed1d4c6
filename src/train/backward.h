// Back-propagation and weight updates on the record: the plain form, which says what training computes.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "net/neural_net.h"

namespace norv {

// What an output unit with the error e = a - target costs, and the derivative of that by a.
struct OutputCost {
  float cost;
  float gradient;
};

// 1: absolute. 2: absolute, smoothed by a parabola for |e| <= 1/255. 3: log(e^2 + 1). Any other: quadratic, e^2 / 2.
inline OutputCost CostOfError(int32_t costSelection, float e);

// delta as it is stored: the product rounded, then held within [-bound, +bound] unless bound is 0. A NaN stays one.
inline float ClippedDelta(double product, float bound);

// After ForwardPass. SampleCost becomes the sample's cost and Cost grows by it; every unit gets its delta, the
// derivative of the cost by z (clipped). target: LastNi values. Sums run over the units of the next layer in order,
// single precision. 1, 4, 8 or 16 threads as in ForwardPass; with other counts the hidden layers are left as they are.
void BackPropagate(NeuralNet& net, const float* target, int32_t costSelection, float bound, int32_t threads);

// After BackPropagate: one step down the gradient at the rate nu, with momentum unless that is 0. Other thread counts
// than 1, 4, 8 or 16 update nothing.
void UpdateWeights(NeuralNet& net, float nu, float momentum, int32_t threads);

// All velocities to 0.
void ResetMomentum(NeuralNet& net);

// log(e^2 + 1) and its derivative.
OutputCost LogarithmicCost(float e);

inline OutputCost CostOfError(int32_t costSelection, float e) {
  constexpr float kSmoothed = 0.003921569f;  // 1/255: below it the smoothed absolute cost is a parabola
  constexpr float kParabola = 127.49999f, kParabolaOffset = 0.0019607844f, kParabolaSlope = 254.99998f;
  if (costSelection == 2 && std::abs(e) <= kSmoothed) return {e * e * kParabola + kParabolaOffset, e * kParabolaSlope};
  if (costSelection == 1 || costSelection == 2) return {std::abs(e), e < 0 ? -1.0f : e == 0 ? e : 1.0f};
  if (costSelection == 3) return LogarithmicCost(e);
  return {e * 0.5f * e, e};
}

inline float ClippedDelta(double product, float bound) {
  const float delta = static_cast<float>(product);
  return bound == 0 ? delta : std::max(std::min(delta, bound), -bound);
}

}  // namespace norv
