// The vector levels, by the rows of the architecture's file; the build makes every family's files from the same rows.
#pragma once

#if defined(__x86_64__)
#include "simd/levels_x86.h"
#elif defined(__aarch64__)
#include "simd/levels_arm64.h"
#endif

namespace norv {

#define NORV_LEVEL_NAME(name, ...) name,
enum class VectorLevel { NORV_LEVELS(NORV_LEVEL_NAME, ) };

#define NORV_LEVEL_VALUE(name, ...) VectorLevel::name,
inline constexpr VectorLevel kLevels[] = {NORV_LEVELS(NORV_LEVEL_VALUE, )};

}  // namespace norv
