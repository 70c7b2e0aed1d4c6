// Restoration settings to start from, by what is wrong with a picture and how many times it is enlarged.
#pragma once

#include <optional>
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
// The same for a picture under a Gaussian blur of so many of its pixels (as in FilterOfBlur).
RestoreParameters DeblurringPreset(const std::string& name, int32_t factor, double sigma);
// The same for a restoration that starts from a network's answer.
RestoreParameters RefinementPreset(const std::string& name, int32_t factor);

// Whether pictures of that kind are what they should be, and not to be smoothed: the clean and the drawn ones.
bool HoldsToPicture(const std::string& preset);

// A parameter that people turn on its own.
struct RestoreKnob {
  const char* option;  // as on the command line
  const char* meaning;
  std::variant<int32_t RestoreParameters::*, float RestoreParameters::*> field;
  double low, high;          // what makes sense, both included
  const char* aliases = "";  // older names of the option
  int32_t onlyOfType = 0;    // the type of regulariser that looks at it; 0: several
  bool refines = false;      // turns a restoration from a network's answer too
};

std::span<const RestoreKnob> RestoreKnobs();

// Values that stand instead of a preset's, one a knob of the table.
using KnobValues = std::vector<std::optional<double>>;

// The option of the first that was said; null where none was.
const char* FirstSaid(const KnobValues& values);
// Sets what was said; no values at all are none said.
void TurnKnobs(RestoreParameters& parameters, const KnobValues& values);

// A step that can be seen, at the price of 0.1 to 0.2 dB where the preset was right.
void MakeSharper(RestoreParameters& parameters);
void MakeSmoother(RestoreParameters& parameters);

// Pixels of a Gaussian blur that can be taken back.
inline constexpr double kLeastBlur = 0.1, kMostBlur = 1.5;

// The kernel code for a picture that was blurred by a Gaussian of so many of its own pixels (0.1 to 1.5), after it had
// been made small unless the factor is 1.
int32_t FilterOfBlur(double sigma, int32_t factor);

}  // namespace norv
