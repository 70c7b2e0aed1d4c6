// Assertions on what our own functions promise each other: always compiled in, the failed condition's text with its
// source file and line on standard error, then the end of the process.
#pragma once

namespace norv {

// file: a path, of which the last component is named.
[[noreturn]] void AssertionFailed(const char* condition, const char* file, int line);

}  // namespace norv

#define NORV_ASSERT(condition) NORV_ASSERT_TEXT(condition, #condition)

// With the text that is to be printed for the condition.
#define NORV_ASSERT_TEXT(condition, text) \
  ((condition) ? static_cast<void>(0) : ::norv::AssertionFailed(text, __FILE__, __LINE__))
