// Reduction filters in words.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace norv {

// "cubic of -0.5", "box", "tent", "Lanczos-3", "Gaussian of 0.6 pixels": what a ShrinkOrder means. Throws a Failure for
// an unknown one.
std::string FilterInWords(int32_t shrinkOrder);

// All orders there are, the lowest first.
std::vector<int32_t> ShrinkOrders();

}  // namespace norv
