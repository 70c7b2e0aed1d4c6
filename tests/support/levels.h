// The vector levels that this machine can run.
#pragma once

#include <vector>

#include "simd/evaluate/kernels.h"
#include "simd/levels.h"

namespace norv::test {

inline std::vector<VectorLevel> AvailableLevels() {
  std::vector<VectorLevel> levels;
  for (const VectorLevel level : kLevels)
    if (level <= MachineLevel()) levels.push_back(level);
  return levels;
}

// Another level for the time of a block.
class ForcedLevel {
 public:
  explicit ForcedLevel(VectorLevel level) : before_(ActiveLevel()) { ForceLevel(level); }
  ~ForcedLevel() { ForceLevel(before_); }
  ForcedLevel(const ForcedLevel&) = delete;
  ForcedLevel& operator=(const ForcedLevel&) = delete;

 private:
  VectorLevel before_;
};

}  // namespace norv::test
