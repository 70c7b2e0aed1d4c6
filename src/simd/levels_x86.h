// The vector levels of x86 processors, narrowest first, a row each; a level has what the rows above it have, too.
// cmake/levels.cmake reads the rows as well and compiles a level's files with -m for each feature.
//
//   name    as NORV_SIMD, the files and the namespaces of the level spell it
//   bytes   of a vector
//   macro   what the compiler defines that was asked for the level
//   test    what the processor and its operating system must have; HAS is defined by who asks
//
// Further arguments are handed to every row.
#pragma once

// clang-format off
#define NORV_LEVELS(ROW, ...)                                                                                    \
  ROW(sse2,   16, __SSE2__,    HAS(sse2), __VA_ARGS__)                                                           \
  ROW(avx,    32, __AVX__,     HAS(avx), __VA_ARGS__)                                                            \
  ROW(avx2,   32, __AVX2__,    HAS(avx2) && HAS(fma), __VA_ARGS__)                                               \
  ROW(avx512, 64, __AVX512F__, HAS(avx512f) && HAS(avx512dq) && HAS(avx512bw) && HAS(avx512vl), __VA_ARGS__)
// clang-format on
