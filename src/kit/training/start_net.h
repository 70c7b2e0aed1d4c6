// Networks to start from: random ones for training, and ones whose answer is a known interpolation.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kit/scale/interpolation.h"
#include "net/neural_net.h"

namespace norv {

// Outputs may take any value; hidden layers usually rectify with a slope.
inline constexpr int32_t kIdentityKind = 12, kSlopedRampKind = 14;

struct NetPlan {
  int32_t inputs = 48;          // of a layout of net/layouts.h
  int32_t factor = 2;           // 2 or 4: factor^2 outputs, as far as the layout enlarges so
  std::vector<int32_t> hidden;  // units of the hidden layers, first to last
  std::vector<int32_t> kinds;   // activation kind of every layer, the output layer last
  uint64_t seed = 1;
};

// A plan without kinds gets this one for its hidden layers, and outputs that may take any value.
void ChooseKinds(NetPlan& plan, int32_t hiddenKind);

// Empty when enlargement has this layout and the plan is consistent; otherwise the reason.
std::string WhyNoNet(const NetPlan& plan);

// Weights uniform between -l and l with l = gain * sqrt(3 / inputs of the unit), the gain by activation kind so that
// values keep their variance from layer to layer (He et al. 2015 for ramps); biases 0. The same network on every
// machine.
NeuralNet RandomNet(const NetPlan& plan);

// The layers of a network that has been trained, to go on from; `hidden` with more units where it is not empty.
NetPlan LayersOf(const NeuralNet& net, const std::vector<int32_t>& hidden);

// Empty when the network can be widened to the plan: the same number of layers, none with fewer units; otherwise the
// reason.
std::string WhyNotWider(const NeuralNet& net, const NetPlan& plan);

// The network with further units in its hidden layers, whose answer they do not change yet: they start random, and
// nothing looks at them (Chen, Goodfellow and Shlens 2016 start theirs as copies instead).
NeuralNet Widened(const NeuralNet& net, const NetPlan& plan);

// Empty when the layout can hold this interpolation exactly; otherwise the reason.
std::string WhyNoInterpolation(const NetPlan& plan, Interpolation interpolation);

// A network of identity units whose enlargement is exactly the interpolation away from the edges. Hidden layers, if
// any, pass the answer on in their first factor^2 units; what their other units do starts random and counts nothing
// yet.
NeuralNet InterpolationNet(const NetPlan& plan, Interpolation interpolation);

}  // namespace norv
