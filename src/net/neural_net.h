// The network's record: what .net files hold and what the plain reference evaluates and trains.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "linear/matrix2.h"
#include "net/activation.h"
#include "net/net_header.h"

namespace norv {

// One neuron. z = X . W + b, a = (float) f((double) z).
struct NetUnit {
  int32_t ActivationKind = 0;
  int32_t Nin = 0;
  matrix X;                                      // Nin x 1 (7 x 7 for 49 inputs): inputs of the last evaluation
  matrix W;                                      // Nin x 1: weights
  matrix V;                                      // Nin x 1: weight velocity of momentum training
  float b = 0;                                   // bias
  float z = 0;                                   // weighted sum of the last evaluation
  float a = 0;                                   // output of the last evaluation
  float delta = 0;                               // error term of the last back-propagation
  float vb = 0;                                  // bias velocity
  ActivationFunction f = nullptr, df = nullptr;  // bound from ActivationKind; null for kind 0
};

struct NetLayer {
  int32_t Ni = 0;
  std::vector<NetUnit> units;
};

// A fully connected feed-forward network of up to 16 layers; all zero when empty.
struct NeuralNet : NetHeader {
  std::vector<NetLayer> layers;

  int32_t LastNi() const { return layers.empty() ? 0 : layers.back().Ni; }
};

// (Re)builds the structure, all parameters zero; sizes of 0 and less are absent layers and kept as they are. Sizes that
// are not buildable throw the text that says why.
void BuildNet(NeuralNet& net, int32_t N0, const std::array<int32_t, kMaxLayers>& sizes);

void ClearNet(NeuralNet& net);

// A copy that can be evaluated but not trained with momentum: V empty, vb 0.
void CopyNetForEvaluation(NeuralNet& copy, const NeuralNet& net);

// Dimensions and zeroes X, W, V and the parameters of one unit; a and vb keep their values.
void InitUnit(NetUnit& unit, int32_t nin);

// Sets f and df from ActivationKind; a kind above 17 leaves them as they were.
void BindActivation(NetUnit& unit);

// Null when every unit has an activation; otherwise the reason why the network, or the layer alone, cannot be
// evaluated. Files may hold such networks: they are refused where they would be evaluated, and nowhere else.
const char* WhyNotEvaluable(const NeuralNet& net);
const char* WhyLayerNotEvaluable(const NetLayer& layer);

// Mean and population standard deviation of the weights of all layers but the last, summed strictly one after another
// in single precision. NaN for a single layer.
void NetWeightStatistics(const NeuralNet& net, float& mean, float& std);

}  // namespace norv
