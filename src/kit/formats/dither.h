// Where rounding to few bits goes up or down, so that the eye's mean over some pixels keeps what a sample cannot.
#pragma once

#include <array>
#include <cstdint>

namespace norv {

inline constexpr int32_t kDitherSide = 64;

// One row of the pattern, 0 < threshold < 1: what is left above a whole value goes up where it reaches 1 - threshold.
using DitherRow = std::array<float, kDitherSide>;

// Of row y of a picture; its pixel x takes threshold x % kDitherSide. Whole values stay what they are wherever they
// stand, and nothing depends on the pixels around or on the order of the work. Blue noise by void and cluster (Ulichney
// 1993), in integers, the same on every machine. Made at the first call.
const DitherRow& DitherRowOf(int32_t y);

}  // namespace norv
