// The few words that x86 says better than the compiler by itself. To be included by vector-inl.h only.
#pragma once

#include <immintrin.h>

#include "simd/vector_generic-inl.h"

namespace norv::NORV_LEVEL {

inline float Sqrt(float v) { return _mm_cvtss_f32(_mm_sqrt_ss(_mm_set_ss(v))); }
inline double Sqrt(double v) { return _mm_cvtsd_f64(_mm_sqrt_pd(_mm_set1_pd(v))); }
inline Vec<float, 4> Sqrt(Vec<float, 4> v) { return _mm_sqrt_ps(v); }
inline Vec<double, 2> Sqrt(Vec<double, 2> v) { return _mm_sqrt_pd(v); }

template <typename Mask>
requires(sizeof(Mask) == 16) inline bool AnyLane(Mask mask) { return _mm_movemask_epi8(__m128i(mask)) != 0; }

// The compiler's own conversions take the lanes one by one.
inline Vec<double, 2> Widen(Vec<float, 2> v) { return _mm_cvtps_pd(Join(v, v)); }
inline Vec<float, 2> Narrow(Vec<double, 2> v) { return LowHalf(Vec<float, 4>(_mm_cvtpd_ps(v))); }

// There is no comparison of 64 bits; both halves of a lane must be 0.
inline bool AnyWithout(Vec<uint64_t, 2> a, Vec<uint64_t, 2> b, uint64_t bits) {
  const auto none = [bits](Vec<uint64_t, 2> lanes) {
    const __m128i halves = _mm_cmpeq_epi32(__m128i(lanes & bits), _mm_setzero_si128());
    return halves & _mm_shuffle_epi32(halves, 0xb1);
  };
  return AnyLane(none(a) | none(b));
}

#if defined(__AVX__)
inline Vec<float, 8> Sqrt(Vec<float, 8> v) { return _mm256_sqrt_ps(v); }
inline Vec<double, 4> Sqrt(Vec<double, 4> v) { return _mm256_sqrt_pd(v); }

// The compiler's own conversion takes two halves, one of them by way of memory.
inline Vec<double, 4> Widen(Vec<float, 4> v) { return _mm256_cvtps_pd(v); }

template <typename Mask>
requires(sizeof(Mask) == 32) inline bool AnyLane(Mask mask) {
  return !_mm256_testz_si256(__m256i(mask), __m256i(mask));
}

#endif

#if defined(__FMA__)
inline Vec<double, 4> MultiplyAddRoughly(Vec<double, 4> a, Vec<double, 4> b, Vec<double, 4> c) {
  return _mm256_fmadd_pd(a, b, c);
}
#endif

#if defined(__AVX512F__)
// Some by masks of all lanes, as the compiler warns of the values that the plain forms leave undefined.
inline Vec<float, 16> Sqrt(Vec<float, 16> v) { return _mm512_maskz_sqrt_ps(0xffff, v); }
inline Vec<double, 8> Sqrt(Vec<double, 8> v) { return _mm512_maskz_sqrt_pd(0xff, v); }

inline Vec<double, 8> Widen(Vec<float, 8> v) { return _mm512_maskz_cvtps_pd(0xff, v); }

template <typename Mask>
requires(sizeof(Mask) == 64) inline bool AnyLane(Mask mask) {
  return _mm512_test_epi32_mask(__m512i(mask), __m512i(mask)) != 0;
}

inline bool AnyWithout(Vec<uint64_t, 8> a, Vec<uint64_t, 8> b, uint64_t bits) {
  const __m512i all = _mm512_set1_epi64(static_cast<int64_t>(bits));
  return (_mm512_testn_epi64_mask(__m512i(a), all) | _mm512_testn_epi64_mask(__m512i(b), all)) != 0;
}

inline bool AnyBeyond(Vec<float, 16> x, float limit) {
  return _mm512_cmp_ps_mask(_mm512_abs_ps(x), _mm512_set1_ps(limit), _CMP_NLE_UQ) != 0;
}

inline Vec<double, 8> MultiplyAddRoughly(Vec<double, 8> a, Vec<double, 8> b, Vec<double, 8> c) {
  return _mm512_fmadd_pd(a, b, c);
}
#endif

}  // namespace norv::NORV_LEVEL
