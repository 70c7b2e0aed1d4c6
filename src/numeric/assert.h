// Assertions on what our own functions promise each other: always compiled in, the failed condition's text with its
// source file and line on standard error, then the end of the process.
#pragma once

namespace norv {

[[noreturn]] void AssertionFailed(const char* condition, const char* file, int line);

}  // namespace norv

#define NORV_ASSERT(condition) \
  ((condition) ? static_cast<void>(0) : ::norv::AssertionFailed(#condition, __FILE__, __LINE__))
