// The vector levels of 64-bit ARM processors; what a row says is in levels_x86.h. Every such processor has this one.
#pragma once

// clang-format off
#define NORV_LEVELS(ROW, ...)                                                                                    \
  ROW(neon, 16, __ARM_NEON, true, __VA_ARGS__)
// clang-format on
