// Restoration settings to start from, by what is wrong with a picture and how many times it is enlarged.
#pragma once

#include <span>
#include <string>
#include <variant>
#include <vector>

#include "restore/parameters.h"

namespace norv {

// The names of the presets.
const std::vector<std::string>& RestorePresetNames();

// The preset's parameters for this factor; factors below 2 take those of 2, factors above 4 those of 4. Throws a
// Failure for an unknown name.
RestoreParameters RestorePreset(const std::string& name, int32_t factor);

// A parameter that people turn on its own.
struct RestoreKnob {
  const char* option;  // as on the command line
  const char* meaning;
  std::variant<int32_t RestoreParameters::*, float RestoreParameters::*> field;
  double low, high;          // what makes sense, both included
  const char* aliases = "";  // older names of the option
};

std::span<const RestoreKnob> RestoreKnobs();

}  // namespace norv
