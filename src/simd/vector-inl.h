// The vocabulary of vector code: types and words for one level, of any width. It is all that kernels are written in;
// intrinsics are in the file of an architecture only.
//
// Included by a level's file, which defines NORV_LEVEL (the namespace that keeps one level's code apart from the
// others') and NORV_VECTOR_BYTES. Everything is in that namespace, and nothing else with code in it may be included: an
// inline function compiled for wide vectors must never be the copy that the linker keeps for machines without them.
#pragma once

#if !defined(NORV_LEVEL) || !defined(NORV_VECTOR_BYTES)
#error "vector code is included by a level's file, which the build makes"
#endif

#include "simd/vector_generic-inl.h"
#if defined(__x86_64__)
#include "simd/vector_x86-inl.h"
#elif defined(__aarch64__)
#include "simd/vector_arm64-inl.h"
#endif
#include "simd/vector_level.h"

namespace norv::NORV_LEVEL {

// What the compiler was really asked for: the last level whose macro it defines, as that then stands for another text.
#define NORV_TEXT(...) #__VA_ARGS__
#define NORV_LEVEL_IS_COMPILED(name, bytes, macro, ...) +(NORV_TEXT(macro)[0] != '_')
inline constexpr VectorLevel kCompiledLevel = static_cast<VectorLevel>(-1 NORV_LEVELS(NORV_LEVEL_IS_COMPILED, ));

// Whether any lane of a or b has none of the bits.
template <typename V>
inline bool AnyWithout(V a, V b, Element<V> bits) {
  return AnyLane(((a & bits) == 0) | ((b & bits) == 0));
}

// Whether any magnitude is above the limit, or a NaN.
template <typename V>
inline bool AnyBeyond(V x, Element<V> limit) {
  return AnyLane(~((x <= limit) & (x >= -limit)));
}

// Magnitude: any sign goes, that of 0 and NaN too.
template <typename V>
inline V Abs(V x) {
  if constexpr (sizeof(Element<V>) == 4)
    return __builtin_bit_cast(V, __builtin_bit_cast(Like<V, int32_t>, x) & 0x7fffffff);
  else
    return FromBits<V>(ToBits(x) & ~(uint64_t{1} << 63));
}

// A magnitude (no sign of its own) with the sign of another value.
template <typename V>
inline V WithSignOf(V magnitude, V sign) {
  return FromBits<V>(ToBits(magnitude) | (ToBits(sign) & (uint64_t{1} << 63)));
}

}  // namespace norv::NORV_LEVEL
