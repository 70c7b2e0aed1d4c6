// Elementary functions of one double, the very bits of their vector forms at every level and on every platform. Nothing
// that reaches an output file calls the C library's own, which differ by processor and platform.
//
// Each is accurate to 0.85 units in the last place over the whole range; NaN, infinities, signed zeros, overflow
// and underflow come out as in IEC 60559. Bodies: the -inl.h files beside.
#pragma once

namespace norv {

double Exp(double x);
double Log(double x);
double Atan(double x);
double Atan2(double y, double x);
double Acos(double x);
double Sin(double x);
double Cos(double x);
// x to the power y for x >= 0.
double Pow(double x, double y);

}  // namespace norv
