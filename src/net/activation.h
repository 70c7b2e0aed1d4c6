// The activation kinds: one table row each.
#pragma once

#include <cstdint>

#include "simd/activation/kinds.h"

namespace norv {

using ActivationFunction = double (*)(double);

struct Activation {
  ActivationFunction f;   // null for kind 0
  ActivationFunction df;  // its derivative
};

// The row of a kind 0 .. kActivationKinds - 1.
const Activation& ActivationOf(int32_t kind);

}  // namespace norv
