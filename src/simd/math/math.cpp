#include "simd/math/math.h"

#define NORV_LEVEL scalar
#define NORV_VECTOR_BYTES 16
#include "simd/math/angles-inl.h"
#include "simd/math/exponential-inl.h"

namespace norv {

double Exp(double x) { return scalar::Exp(x); }
double Log(double x) { return scalar::Log(x); }
double Atan(double x) { return scalar::Atan(x); }
double Atan2(double y, double x) { return scalar::Atan2(y, x); }
double Acos(double x) { return scalar::Acos(x); }
double Sin(double x) { return scalar::Sin(x); }
double Cos(double x) { return scalar::Cos(x); }
double Pow(double x, double y) { return scalar::Pow(x, y); }

}  // namespace norv
