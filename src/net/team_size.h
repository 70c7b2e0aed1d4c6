// The thread counts that networks are evaluated and trained with.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace norv {

inline constexpr int32_t kTeamSizes[] = {1, 4, 8, 16};

// Every other count has its own meaning in each operation, by the contract with the graphical program.
constexpr bool IsTeamSize(int32_t threads) {
  return std::find(std::begin(kTeamSizes), std::end(kTeamSizes), threads) != std::end(kTeamSizes);
}

}  // namespace norv
