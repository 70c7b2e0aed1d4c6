// Vector types of one level, and what lets a template over them take a plain double as well.
//
// To be included through kernels-inl.h or math.cpp, which define NORV_LEVEL (the namespace that keeps one level's code
// apart from the others') and NORV_VECTOR_BYTES.

#include <immintrin.h>

namespace norv::NORV_LEVEL {

inline constexpr int kFloatLanes = NORV_VECTOR_BYTES / 4;
inline constexpr int kDoubleLanes = NORV_VECTOR_BYTES / 8;

using Floats = float __attribute__((vector_size(NORV_VECTOR_BYTES)));
using HalfFloats = float __attribute__((vector_size(NORV_VECTOR_BYTES / 2)));  // as many as Doubles
using Doubles = double __attribute__((vector_size(NORV_VECTOR_BYTES)));
using Words = uint64_t __attribute__((vector_size(NORV_VECTOR_BYTES)));

// V is double or Doubles from here on; masks are bool or the result of comparing Doubles, for the operator ?: of both.
template <typename V>
struct WordOf {
  using Type = Words;
};
template <>
struct WordOf<double> {
  using Type = uint64_t;
};
template <typename V>
using Word = typename WordOf<V>::Type;

template <typename V>
inline Word<V> ToBits(V x) {
  return __builtin_bit_cast(Word<V>, x);
}

template <typename V>
inline V FromBits(Word<V> bits) {
  return __builtin_bit_cast(V, bits);
}

template <typename V>
inline V Fill(double value) {
  return value - V{};
}

template <typename V>
inline V Magnitude(V x) {
  return FromBits<V>(ToBits(x) & ~(uint64_t{1} << 63));
}

template <typename V>
inline V WithSignOf(V magnitude, V sign) {
  return FromBits<V>(ToBits(magnitude) | (ToBits(sign) & (uint64_t{1} << 63)));
}

// Calls change(lane) on every lane's double.
template <typename V, typename Change>
inline V EachLane(V x, Change change) {
  double lanes[sizeof(V) / sizeof(double)];
  __builtin_memcpy(lanes, &x, sizeof(V));
  for (double& lane : lanes) lane = change(lane);
  __builtin_memcpy(&x, lanes, sizeof(V));
  return x;
}

inline bool AnyLane(bool mask) { return mask; }

template <typename Mask>
inline bool AnyLane(Mask mask) {
  for (size_t i = 0; i < sizeof(Mask) / sizeof(mask[0]); ++i)
    if (mask[i]) return true;
  return false;
}

template <typename V>
inline V SquareRoot(V x) {
  return EachLane(x, [](double lane) { return __builtin_sqrt(lane); });
}

// A vector of either precision from any address, and back.
template <typename V, typename T>
inline V Load(const T* from) {
  V v;
  __builtin_memcpy(&v, from, sizeof(V));
  return v;
}

template <typename V, typename T>
inline void Store(V v, T* to) {
  __builtin_memcpy(to, &v, sizeof(V));
}

// By intrinsics, as the compiler's own conversion takes two halves, one of them by way of memory.
inline Doubles Widen(HalfFloats x) {
#if NORV_VECTOR_BYTES == 64
  return _mm512_maskz_cvtps_pd(0xff, x);
#else
  return _mm256_cvtps_pd(x);
#endif
}

inline HalfFloats Narrow(Doubles x) { return __builtin_convertvector(x, HalfFloats); }

}  // namespace norv::NORV_LEVEL
