// The table of regulariser types: which weighted differences each takes and how its iterations go.
#pragma once

#include <cstdint>
#include <vector>

#include "restore/parameters.h"
#include "restore/weights.h"

namespace norv {

enum class TermKind {
  isotropic,      // strength and threshold: lambda, delta
  cross,          // lambda cross, delta cross
  crossIfAsked,   // the same, left out with its field when lambda cross is 0 or less
  scaledIfAsked,  // the same with the weights multiplied into the directions
  crossAndDot,    // cross, and dot with lambda and delta
  masked,         // cross, at the pixels of the dilated edge mask
  axis,           // lambda, delta
  reference,      // isotropic, with weights of the reference plane
};

// Outer iterations of one kind: weights of the plane as it stands, then an update.
struct Stage {
  Rule rule;
  std::vector<TermKind> terms;  // none: the stage does nothing
  int32_t iterationFactor = 1;  // iterations as a multiple of those asked for
  int32_t stepDivisor = 1;      // inner steps as a part of those asked for
};

struct Recipe {
  int32_t type;
  Stage first;
  bool secondPass;   // emphasis and the first stage once more, when emphasis is asked for
  bool followField;  // the second pass finds the orientation field anew in each iteration, else it keeps the last one
  Stage tail;
};

// An unknown type acts as 0, which does nothing but the emphasis.
const Recipe& RecipeOf(int32_t type);

// Whether a restoration takes any update step: its type has terms, and there are iterations. If not, nobody looks at
// the kernel code.
bool HasUpdates(const RestoreParameters& parameters);

}  // namespace norv
