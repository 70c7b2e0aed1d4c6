// The loops of the restoration's row kernels: a formula is written once, for a vector of up to eight floats and for the
// single floats of the tail. With sixteen no sweep was faster, and the orientation field took 1.25 times as long.
#pragma once

#include "simd/vector-inl.h"

namespace norv::NORV_LEVEL {
namespace {

// The hardware's own prefetching ends at every page, which is every row of a megapixel plane: what a sweep will ask its
// rows for so many floats further on is fetched meanwhile.
constexpr int64_t kAhead = 512;
template <typename... Rows>
inline auto Ahead(Rows... rows) {
  return [=]([[maybe_unused]] int64_t i) { (__builtin_prefetch(rows + i + kAhead), ...); };
}

// body<V>(i) for whole vectors, then for single elements; fetch is made by Ahead().
template <typename Fetch, typename Body>
inline void ForRow(int64_t n, const Fetch& fetch, const Body& body) {
  int64_t i = 0;
  for (; i + kUpToEight <= n; i += kUpToEight) {
    fetch(i);
    body.template operator()<UpToEight>(i);
  }
  for (; i < n; ++i) body.template operator()<float>(i);
}

template <typename Body>
inline void ForRow(int64_t n, const Body& body) {
  ForRow(n, Ahead(), body);
}

// sums[i mod 8] += value<V>(i) for i < n.
template <typename Fetch, typename Value>
inline void SumRow(double* sums, int64_t n, const Fetch& fetch, const Value& value) {
  using Part = Vec<double, kUpToEight / 2>;
  Part part[8 / kLanes<Part>];
  for (int k = 0; k < 8; k += kLanes<Part>) part[k / kLanes<Part>] = Load<Part>(sums + k);
  int64_t i = 0;
  for (; i + 8 <= n; i += 8) {
    fetch(i);
    for (int k = 0; k < 8; k += kUpToEight) {
      const UpToEight v = value.template operator()<UpToEight>(i + k);
      part[k / kLanes<Part>] += Widen(LowHalf(v));
      part[k / kLanes<Part> + 1] += Widen(HighHalf(v));
    }
  }
  for (int k = 0; k < 8; k += kLanes<Part>) Store(part[k / kLanes<Part>], sums + k);
  for (int64_t lane = 0; i < n; ++i, ++lane) sums[lane] += static_cast<double>(value.template operator()<float>(i));
}

template <typename Value>
inline void SumRow(double* sums, int64_t n, const Value& value) {
  SumRow(sums, n, Ahead(), value);
}

}  // namespace
}  // namespace norv::NORV_LEVEL
