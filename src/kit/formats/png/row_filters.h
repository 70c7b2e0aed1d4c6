// The filters that make a row of samples easier to compress (ISO/IEC 15948, clause 9).
#pragma once

#include <cstdint>

namespace norv {

inline constexpr int kRowFilters = 5;  // none, sub, up, average, Paeth: their numbers in the file

// Zeros that have to stand before a row and before the one above: the largest pixel's bytes.
inline constexpr int64_t kRowMargin = 8;

// The row of `bytes` bytes, filtered, behind the filter's number; `above` is the row above, zeros for the first one.
void FilterRow(int filter, const uint8_t* row, const uint8_t* above, int64_t bytes, int32_t pixelBytes,
               uint8_t* target);

// The same by the filter that leaves the smallest sum of absolute values (the standard's 12.8), the first of equals.
// `scratch` is as long as the target, 1 + bytes.
void FilterRowBest(const uint8_t* row, const uint8_t* above, int64_t bytes, int32_t pixelBytes, uint8_t* target,
                   uint8_t* scratch);

}  // namespace norv
