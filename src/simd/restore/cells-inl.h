// The differences of the 2 x 2 cells of a row.
#pragma once

#include "simd/restore/kernels.h"
#include "simd/restore/loops-inl.h"

namespace norv::NORV_LEVEL {
namespace {

template <typename V>
inline V First(CellRow x, int64_t i) {
  return Load<V>(x.lower + i + x.next) - Load<V>(x.upper + i);
}
template <typename V>
inline V Second(CellRow x, int64_t i) {
  return Load<V>(x.lower + i) - Load<V>(x.upper + i + x.next);
}
template <typename V>
inline V Cross(CellRow x, DirectionRow u, int64_t i) {
  return First<V>(x, i) * Load<V>(u.u2 + i) - Second<V>(x, i) * Load<V>(u.u1 + i);
}
template <typename V>
inline V Dot(CellRow x, DirectionRow u, int64_t i) {
  return First<V>(x, i) * Load<V>(u.u1 + i) + Second<V>(x, i) * Load<V>(u.u2 + i);
}

}  // namespace
}  // namespace norv::NORV_LEVEL
