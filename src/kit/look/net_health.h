// How healthy a network is: what its units do when it looks at pictures.
//
// Of every unit: its output and slope at each of the pixels that were looked at. Dead: the output is always the same.
// Saturated: at 99.9 % of them or more the slope is under 5 % of the steepest that its activation has, so that training
// hardly moves it (of a ramp: it is never on).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "net/neural_net.h"

namespace norv {

struct LayerHealth {
  std::vector<int32_t> dead, saturated, notFinite;  // units, from 1; not finite: weights, bias or output
};

struct NetHealth {
  std::vector<LayerHealth> layers;
  std::string lookedAt;  // in words
  size_t pixels = 0;     // that were looked at

  bool IsGood() const;
};

// Planes of display values that a network looks at, and what they are called.
struct LookedAt {
  std::string words;
  std::vector<matrix> planes;
};

// Our own test card, 240 x 160 pixels.
LookedAt TestCardToLookAt();

// A few thousand pixels of the planes, evenly spread. A network without a layout for its inputs, which no picture can
// be shown to, gets numbers of -0.5 .. 0.5 from a fixed sequence instead, as the words then say. A network that cannot
// be evaluated (WhyNotEvaluable) is a broken promise. `net` keeps the last evaluation.
NetHealth HealthOf(NeuralNet& net, const LookedAt& lookedAt);

}  // namespace norv
