// The activation kinds as their formulas are written down, with the C library's functions.
#pragma once

#include <cmath>
#include <cstdint>

namespace norv::test {

inline double PlainActivation(int32_t kind, double x) {
  switch (kind) {
    case 1:
      return 1 / (std::exp(-x) + 1);
    case 2:
      return 1 / (std::exp(-x) + 1) - 0.5;
    case 3:
      return std::atan(x * 0.7853981633974483) * 0.3183098861837907;
    case 4:
      return 0.25 * x;
    case 5:
      return x >= 0 ? 0.25 * x : 0;
    case 6:
      return x >= 0 ? 0.25 * x : 0.0025 * x;
    case 7:
      return (0.5 * x) * 0.5 / (std::fabs(0.5 * x) + 1);
    case 8:
      return 0.25 * std::log(std::exp(x) + 1);
    case 9:
      return x >= 0 ? 0.25 * x : (0.5 * x) * 0.5 / (1 - 0.5 * x);
    case 10:
      return x >= 0 ? 0.25 * x : std::exp(x) * (0.25 * x);
    case 11:
      return x > 0 ? x : std::exp(x) - 1;
    case 12:
      return x;
    case 13:
      return x < 0 ? 0 : x;
    case 14:
      return x >= 0 ? x : 0.01 * x;
    case 15:
      return 0.5 * x / (std::fabs(x) + 1);
    case 16:
      return std::log(std::exp(x) + 1);
    case 17:
      return x > 0 ? x : std::exp(x) * x;
    default:
      return std::nan("");
  }
}

}  // namespace norv::test
