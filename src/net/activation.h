// The activation kinds: one table row each.
#pragma once

#include <cstdint>

namespace norv {

inline constexpr int32_t kActivationKinds = 18;  // 0 to 17; 0 has no functions

using ActivationFunction = double (*)(double);

struct Activation {
  ActivationFunction f;   // null for kind 0
  ActivationFunction df;  // its derivative
};

// The row of a kind 0 .. 17.
const Activation& ActivationOf(int32_t kind);

}  // namespace norv
