// What the benchmarks feed on: a steady stream of values and networks filled with them.
#pragma once

#include <cmath>
#include <cstdint>

#include "net/neural_net.h"

namespace norv {

// The same values from -0.5 to 0.5 in every run.
class Values {
 public:
  float Next() {
    state_ = state_ * 1664525 + 1013904223;
    return static_cast<float>(state_ >> 8) / 16777216.0f - 0.5f;
  }

 private:
  uint32_t state_ = 1;
};

// A network of 48 inputs whose units are all of one kind, weights scaled by fan-in.
inline NeuralNet MakeNet(int64_t kind, const std::array<int32_t, kMaxLayers>& sizes = {64, 64, 4}) {
  NeuralNet net;
  BuildNet(net, 48, sizes);
  Values values;
  for (NetLayer& layer : net.layers)
    for (NetUnit& unit : layer.units) {
      for (int32_t i = 0; i < unit.Nin; ++i) unit.W.x[i] = values.Next() * 2 / std::sqrt(static_cast<float>(unit.Nin));
      unit.b = values.Next();
      unit.ActivationKind = static_cast<int32_t>(kind);
      BindActivation(unit);
    }
  return net;
}

}  // namespace norv
