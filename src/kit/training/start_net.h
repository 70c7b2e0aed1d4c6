// Networks to start from: random ones for training, and ones whose answer is a known interpolation.
#pragma once

#include <cstdint>
#include <vector>

#include "kit/pictures/interpolation.h"
#include "net/neural_net.h"

namespace norv {

struct NetPlan {
  int32_t inputs = 48;          // 8, 24, 48, 49 or 72
  int32_t factor = 2;           // 2 or 4: factor^2 outputs; 4 for 49 and 72 inputs
  std::vector<int32_t> hidden;  // units of the hidden layers, first to last
  std::vector<int32_t> kinds;   // activation kind of every layer, the output layer last
  uint64_t seed = 1;
};

// Null when enlargement has this layout and the plan is consistent; otherwise the reason.
const char* WhyNoNet(const NetPlan& plan);

// Weights uniform between -l and l with l = gain * sqrt(3 / inputs of the unit), the gain by activation kind so that
// values keep their variance from layer to layer (He et al. 2015 for ramps); biases 0. The same network on every
// machine.
NeuralNet RandomNet(const NetPlan& plan);

// Null when the layout can hold this interpolation exactly; otherwise the reason.
const char* WhyNoInterpolation(const NetPlan& plan, Interpolation interpolation);

// A network of identity units whose enlargement is exactly the interpolation away from the edges. Hidden layers, if
// any, pass the answer on in their first factor^2 units; what their other units do starts random and counts nothing
// yet.
NeuralNet InterpolationNet(const NetPlan& plan, Interpolation interpolation);

}  // namespace norv
