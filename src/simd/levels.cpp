#include "simd/levels.h"

#include <cstdlib>

namespace norv {

namespace {

struct Level {
  const char* name;
  bool (*isThere)();
};

// The compiler's test asks the operating system too: whether it saves the wide registers.
#define HAS(feature) (__builtin_cpu_init(), __builtin_cpu_supports(#feature) != 0)
#define NORV_LEVEL_ROW(name, bytes, macro, test, ...) {#name, [] { return test; }},
constexpr Level kRows[] = {NORV_LEVELS(NORV_LEVEL_ROW, )};

VectorLevel activeLevel = MachineLevel();

}  // namespace

const char* NameOf(VectorLevel level) { return kRows[static_cast<int>(level)].name; }

VectorLevel MachineLevel() {
  VectorLevel widest = kLevels[0];  // the floor, for which everything is compiled
  for (const VectorLevel level : kLevels) {
    if (!kRows[static_cast<int>(level)].isThere()) break;
    widest = level;
  }
  return widest;
}

VectorLevel ActiveLevel() { return activeLevel; }

std::string ChooseLevelFromEnvironment() {
  const char* word = std::getenv("NORV_SIMD");
  if (!word || !*word) return "";
  std::string names;
  for (const VectorLevel level : kLevels) {
    names += std::string(names.empty() ? "" : ", ") + NameOf(level);
    if (std::string(word) != NameOf(level)) continue;
    if (level > MachineLevel()) return std::string("NORV_SIMD=") + word + ": this machine has no such vectors";
    ForceLevel(level);
    return "";
  }
  return std::string("NORV_SIMD=") + word + ": not one of " + names;
}

void ForceLevel(VectorLevel level) { activeLevel = level <= MachineLevel() ? level : MachineLevel(); }

}  // namespace norv
