#include "simd/level.h"

#include <cstdlib>

namespace norv {

namespace {

VectorLevel activeLevel = MachineLevel();

bool HasAvx2() { return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"); }

bool HasAvx512() {
  return HasAvx2() && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
         __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
}

}  // namespace

const char* NameOf(VectorLevel level) {
  static constexpr const char* kNames[] = {"avx", "avx2", "avx512"};
  return kNames[static_cast<int>(level)];
}

VectorLevel MachineLevel() {
  // The compiler's test asks the operating system too: whether it saves the wide registers.
  __builtin_cpu_init();
  return HasAvx512() ? VectorLevel::avx512 : HasAvx2() ? VectorLevel::avx2 : VectorLevel::avx;
}

VectorLevel ActiveLevel() { return activeLevel; }

std::string ChooseLevelFromEnvironment() {
  const char* word = std::getenv("NORV_SIMD");
  if (!word || !*word) return "";
  for (const VectorLevel level : {VectorLevel::avx, VectorLevel::avx2, VectorLevel::avx512}) {
    if (std::string(word) != NameOf(level)) continue;
    if (level > MachineLevel()) return std::string("NORV_SIMD=") + word + ": this machine has no such vectors";
    ForceLevel(level);
    return "";
  }
  return std::string("NORV_SIMD=") + word + ": not one of avx, avx2, avx512";
}

void ForceLevel(VectorLevel level) { activeLevel = level <= MachineLevel() ? level : MachineLevel(); }

}  // namespace norv
