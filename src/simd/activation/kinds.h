// How many activation kinds there are; whatever is indexed by a kind has as many entries.
#pragma once

#include <cstdint>

namespace norv {

inline constexpr int32_t kActivationKinds = 18;  // 0 to 17; 0 has no functions

}  // namespace norv
