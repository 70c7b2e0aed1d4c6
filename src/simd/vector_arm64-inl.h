// The few words that 64-bit ARM says better than the compiler by itself. To be included by vector-inl.h only.
#pragma once

#include <arm_neon.h>

#include "simd/vector_generic-inl.h"

namespace norv::NORV_LEVEL {

inline float Sqrt(float v) { return vget_lane_f32(vsqrt_f32(vdup_n_f32(v)), 0); }
inline double Sqrt(double v) { return vget_lane_f64(vsqrt_f64(vdup_n_f64(v)), 0); }
inline Vec<float, 4> Sqrt(Vec<float, 4> v) { return Vec<float, 4>(vsqrtq_f32(float32x4_t(v))); }
inline Vec<double, 2> Sqrt(Vec<double, 2> v) { return Vec<double, 2>(vsqrtq_f64(float64x2_t(v))); }

template <typename Mask>
requires(sizeof(Mask) == 16) inline bool AnyLane(Mask mask) { return vmaxvq_u32(uint32x4_t(mask)) != 0; }

// The compiler's own conversions take the lanes one by one.
inline Vec<double, 2> Widen(Vec<float, 2> v) { return Vec<double, 2>(vcvt_f64_f32(float32x2_t(v))); }
inline Vec<float, 2> Narrow(Vec<double, 2> v) { return Vec<float, 2>(vcvt_f32_f64(float64x2_t(v))); }

inline Vec<double, 2> MultiplyAddRoughly(Vec<double, 2> a, Vec<double, 2> b, Vec<double, 2> c) {
  return Vec<double, 2>(vfmaq_f64(float64x2_t(c), float64x2_t(a), float64x2_t(b)));
}

}  // namespace norv::NORV_LEVEL
