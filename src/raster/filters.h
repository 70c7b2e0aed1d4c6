// The one-dimensional reduction filters: value and support, the one table from code to filter and parameter, and the
// taps.
#pragma once

#include <cstdint>
#include <optional>

#include "linear/matrix2.h"

namespace norv {

enum class Filter { box, tent, lanczos, cubic, gaussian };

struct FilterChoice {
  Filter filter;
  double parameter;  // lanczos: order; cubic: the cubic parameter; gaussian: sigma in small pixels; else unused
};

// The filter of a code: of a ShrinkOrder (training pairs) or of a kernel code (restoration), two families that share
// most of their codes. Nothing for a code without a filter.
//   0 box, 1 tent, 2 .. 64 Lanczos of that order (kernel codes: 2 .. 5 and 15), -1 .. -5 cubic, -11 .. -22 Gaussian,
//   and kernel codes -31 .. -35 Gaussian
std::optional<FilterChoice> FilterOfShrinkOrder(int32_t order);
std::optional<FilterChoice> FilterOfKernelCode(int32_t code);

// L x 1 taps with sum 1 for the integer factor f >= 1, symmetric about their centre: tap positions (i + 0.5) / f to
// both sides for even f; a tap at 0 and i / f to both sides for odd f.
void BuildTaps(matrix& taps, int32_t f, FilterChoice choice);

// BuildTaps by ShrinkOrder; empty for an unknown one.
void ShrinkKernel(matrix& taps, int32_t f, int32_t shrinkOrder);

// 0 for |x| >= a, else sinc(x) sinc(x / a) with sinc(t) = sin(pi t) / (pi t) (Duchon 1979).
double LanczosKernel(double x, double a);

}  // namespace norv
