// Vectors in the compiler's own types, and the words of the vocabulary that every compiler can say; what an
// architecture says better is in its own file. To be included by vector-inl.h only.
//
// V is a vector type or, so that one template serves both, a plain float, double or whole number. A mask is what
// comparing two V gives, for the operator ?: of both.
#pragma once

#include <cstddef>
#include <cstdint>

namespace norv::NORV_LEVEL {

// `lanes` values of type T side by side; one of them is a plain T.
template <typename T, int lanes>
struct VecType {
  typedef T Type __attribute__((vector_size(lanes * sizeof(T))));
};
template <typename T>
struct VecType<T, 1> {
  using Type = T;
};
template <typename T, int lanes>
using Vec = typename VecType<T, lanes>::Type;

template <typename T>
T ByValue(T);

template <typename V>
struct ElementType {
  using Type = decltype(ByValue(V{}[0]));
};
template <>
struct ElementType<float> {
  using Type = float;
};
template <>
struct ElementType<double> {
  using Type = double;
};
template <>
struct ElementType<int32_t> {
  using Type = int32_t;
};
template <>
struct ElementType<uint64_t> {
  using Type = uint64_t;
};
template <typename V>
using Element = typename ElementType<V>::Type;

template <typename V>
inline constexpr int kLanes = static_cast<int>(sizeof(V) / sizeof(Element<V>));

// As many values of another type.
template <typename V, typename T>
using Like = Vec<T, kLanes<V>>;

// A vector of the level's width each; HalfFloats are as many as Doubles.
inline constexpr int kFloatLanes = NORV_VECTOR_BYTES / 4;
inline constexpr int kDoubleLanes = NORV_VECTOR_BYTES / 8;
using Floats = Vec<float, kFloatLanes>;
using HalfFloats = Vec<float, kDoubleLanes>;
using Doubles = Vec<double, kDoubleLanes>;
using Words = Vec<uint64_t, kDoubleLanes>;

// For loops whose lanes are eight sums of the result, or that run slower in wider vectors.
inline constexpr int kUpToEight = kFloatLanes < 8 ? kFloatLanes : 8;
using UpToEight = Vec<float, kUpToEight>;

// From and to any address.
template <typename V>
inline V Load(const Element<V>* from) {
  V v;
  __builtin_memcpy(&v, from, sizeof(V));
  return v;
}

template <typename V>
inline void Store(V v, Element<V>* to) {
  __builtin_memcpy(to, &v, sizeof(V));
}

// The first n lanes, n < kLanes<V>; the others of a load are those of `rest`.
template <typename V>
inline V LoadPart(const Element<V>* from, int64_t n, V rest = V{}) {
  __builtin_memcpy(&rest, from, sizeof(Element<V>) * static_cast<size_t>(n));
  return rest;
}

template <typename V>
inline void StorePart(V v, Element<V>* to, int64_t n) {
  __builtin_memcpy(to, &v, sizeof(Element<V>) * static_cast<size_t>(n));
}

template <typename V>
inline V Fill(Element<V> value) {
  return value - V{};
}

// The values as another type, rounded as the language rounds (to whole numbers: towards zero).
template <typename T, typename V>
inline Like<V, T> Convert(V v) {
  return __builtin_convertvector(v, Like<V, T>);
}

template <typename V>
inline Like<V, double> Widen(V v) {
  return Convert<double>(v);
}
inline double Widen(float v) { return v; }

template <typename V>
inline Like<V, float> Narrow(V v) {
  return Convert<float>(v);
}
inline float Narrow(double v) { return static_cast<float>(v); }

// The bits of doubles as whole numbers, and back.
template <typename V>
inline Like<V, uint64_t> ToBits(V x) {
  return __builtin_bit_cast(Like<V, uint64_t>, x);
}

template <typename V>
inline V FromBits(Like<V, uint64_t> bits) {
  return __builtin_bit_cast(V, bits);
}

// The lanes of `low`, then those of `high`.
template <typename V>
inline Vec<Element<V>, 2 * kLanes<V>> Join(V low, V high) {
  if constexpr (kLanes<V> == 2)
    return __builtin_shufflevector(low, high, 0, 1, 2, 3);
  else if constexpr (kLanes<V> == 4)
    return __builtin_shufflevector(low, high, 0, 1, 2, 3, 4, 5, 6, 7);
  else
    return __builtin_shufflevector(low, high, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
}

// Its two halves.
template <typename V>
inline Vec<Element<V>, kLanes<V> / 2> LowHalf(V v) {
  if constexpr (kLanes<V> == 4)
    return __builtin_shufflevector(v, v, 0, 1);
  else if constexpr (kLanes<V> == 8)
    return __builtin_shufflevector(v, v, 0, 1, 2, 3);
  else
    return __builtin_shufflevector(v, v, 0, 1, 2, 3, 4, 5, 6, 7);
}

template <typename V>
inline Vec<Element<V>, kLanes<V> / 2> HighHalf(V v) {
  if constexpr (kLanes<V> == 4)
    return __builtin_shufflevector(v, v, 2, 3);
  else if constexpr (kLanes<V> == 8)
    return __builtin_shufflevector(v, v, 4, 5, 6, 7);
  else
    return __builtin_shufflevector(v, v, 8, 9, 10, 11, 12, 13, 14, 15);
}

// Whether the mask holds in any lane.
inline bool AnyLane(bool mask) { return mask; }

template <typename Mask>
inline bool AnyLane(Mask mask) {
  for (int i = 0; i < kLanes<Mask>; ++i)
    if (mask[i]) return true;
  return false;
}

// a b + c, with or without a rounding between: only where a bound of the error covers both.
template <typename V>
inline V MultiplyAddRoughly(V a, V b, V c) {
  return a * b + c;
}

}  // namespace norv::NORV_LEVEL
