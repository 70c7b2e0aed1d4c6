// The activation kinds as their formulas are written down, with the C library's functions.
#pragma once

#include <cmath>
#include <cstdint>

namespace norv::test {

inline double PlainActivation(int32_t kind, double value) {
  using Formula = double (*)(double x);
  constexpr Formula kFormulas[] = {[](double x) { return 1 / (std::exp(-x) + 1); },
                                   [](double x) { return 1 / (std::exp(-x) + 1) - 0.5; },
                                   [](double x) { return std::atan(x * 0.7853981633974483) * 0.3183098861837907; },
                                   [](double x) { return 0.25 * x; },
                                   [](double x) { return x >= 0 ? 0.25 * x : 0; },
                                   [](double x) { return x >= 0 ? 0.25 * x : 0.0025 * x; },
                                   [](double x) { return (0.5 * x) * 0.5 / (std::fabs(0.5 * x) + 1); },
                                   [](double x) { return 0.25 * std::log(std::exp(x) + 1); },
                                   [](double x) { return x >= 0 ? 0.25 * x : (0.5 * x) * 0.5 / (1 - 0.5 * x); },
                                   [](double x) { return x >= 0 ? 0.25 * x : std::exp(x) * (0.25 * x); },
                                   [](double x) { return x > 0 ? x : std::exp(x) - 1; },
                                   [](double x) { return x; },
                                   [](double x) { return x < 0 ? 0 : x; },
                                   [](double x) { return x >= 0 ? x : 0.01 * x; },
                                   [](double x) { return 0.5 * x / (std::fabs(x) + 1); },
                                   [](double x) { return std::log(std::exp(x) + 1); },
                                   [](double x) { return x > 0 ? x : std::exp(x) * x; }};
  return kind >= 1 && kind <= 17 ? kFormulas[kind - 1](value) : std::nan("");
}

}  // namespace norv::test
