// The vector level of the machine and the one in use. Results never depend on it.
#pragma once

#include <string>

#include "simd/vector_level.h"

namespace norv {

const char* NameOf(VectorLevel level);

// The widest level of this processor (and its operating system).
VectorLevel MachineLevel();

// The level in use: the machine's own until ForceLevel() chose a lower one.
VectorLevel ActiveLevel();

// Chooses the level that the environment variable NORV_SIMD names; unset or empty keeps the machine's. Returns why the
// choice is refused (an unknown word, a level that the machine lacks), empty when it is not. To be called before the
// first kernel.
std::string ChooseLevelFromEnvironment();

// Uses a level at or below the machine's from now on; for tests and benchmarks.
void ForceLevel(VectorLevel level);

}  // namespace norv
