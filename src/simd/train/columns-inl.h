// Sweeps over weights that lie input by input: lanes are units.
//
//   z[u] = b[u] + sum over i of x[i] W[i][u]
//
// The additions are those of the plain dot product: eight lane sums (index mod 8, the tail to lane 0), then lanes 1 to
// 7 added to lane 0 in order.
#pragma once

#include "simd/train/kernels.h"
#include "simd/vector-inl.h"

namespace norv::NORV_LEVEL {

// Some vectors of units side by side, all inputs.
template <int lanes, int vectors, TrainUpdate update, bool evaluate>
struct Columns {
  using Vector = Vec<float, lanes>;
  const TrainSweep s;  // a copy: what is stored could lie in the original, for all that the compiler knows
  int32_t u;
  Vector minusStep[vectors];

  Columns(const TrainSweep& sweep, int32_t unit) : s(sweep), u(unit) {
    for (int v = 0; v < vectors; ++v) minusStep[v] = -Load<Vector>(s.step + u + v * lanes);
  }

  // The pending step and the product of one input. Both inputs are spread before the first store, behind which they
  // would be read and spread again for every vector.
  inline __attribute__((always_inline)) void Tap(int32_t i, Vector (&sum)[vectors]) {
    const int64_t place = static_cast<int64_t>(i) * s.stride + u;
    Vector previous, input;
    if constexpr (update != TrainUpdate::none) previous = Fill<Vector>(s.previous[i]);
    if constexpr (evaluate) input = Fill<Vector>(s.input[i]);
    for (int v = 0; v < vectors; ++v) {
      float* W = s.W + place + v * lanes;
      Vector w = Load<Vector>(W);
      if constexpr (update == TrainUpdate::plain) w += minusStep[v] * previous;
      if constexpr (update == TrainUpdate::momentum) {
        float* V = s.V + place + v * lanes;
        const Vector velocity = Load<Vector>(V) * s.momentum + minusStep[v] * previous;
        Store(velocity, V);
        w += velocity;
      }
      if constexpr (update != TrainUpdate::none) Store(w, W);
      if constexpr (evaluate) sum[v] += w * input;
    }
  }

  inline __attribute__((always_inline)) void Run() {
    const int32_t whole = s.inputs / 8 * 8;
    Vector total[vectors] = {};
    for (int32_t lane = 0; lane < 8; lane += 2) {
      Vector even[vectors] = {}, odd[vectors] = {};
      // Two lanes at a time, whose sums wait less for each other. Longer bodies were slower.
#pragma GCC unroll 1
      for (int32_t i = lane; i < whole; i += 8) {
        Tap(i, even);
        Tap(i + 1, odd);
      }
      if (lane == 0)
        for (int32_t i = whole; i < s.inputs; ++i) Tap(i, even);
      for (int v = 0; v < vectors; ++v) total[v] += even[v];
      for (int v = 0; v < vectors; ++v) total[v] += odd[v];
    }
    if constexpr (evaluate)
      for (int v = 0; v < vectors; ++v) Store(total[v] + Load<Vector>(s.bias + u + v * lanes), s.z + u + v * lanes);
  }
};

template <TrainUpdate update, bool evaluate>
void SweepColumns(const TrainSweep& sweep, int32_t begin, int32_t end) {
  // Spreading an input costs more in wide vectors: they pay where four of them share it.
  int32_t u = begin;
  for (; u + 4 * kFloatLanes <= end; u += 4 * kFloatLanes) Columns<kFloatLanes, 4, update, evaluate>(sweep, u).Run();
  for (; u + 4 * kUpToEight <= end; u += 4 * kUpToEight) Columns<kUpToEight, 4, update, evaluate>(sweep, u).Run();
  constexpr int kLast = kTrainBlock / kUpToEight;
  for (; u + kTrainBlock <= end; u += kTrainBlock) Columns<kUpToEight, kLast, update, evaluate>(sweep, u).Run();
}

inline void TrainColumns(const TrainSweep& s, int32_t begin, int32_t end) {
  const bool evaluates = s.input != nullptr;
  switch (s.update) {
    case TrainUpdate::none:
      if (evaluates) SweepColumns<TrainUpdate::none, true>(s, begin, end);
      break;
    case TrainUpdate::plain:
      evaluates ? SweepColumns<TrainUpdate::plain, true>(s, begin, end)
                : SweepColumns<TrainUpdate::plain, false>(s, begin, end);
      break;
    case TrainUpdate::momentum:
      evaluates ? SweepColumns<TrainUpdate::momentum, true>(s, begin, end)
                : SweepColumns<TrainUpdate::momentum, false>(s, begin, end);
      break;
  }
}

}  // namespace norv::NORV_LEVEL
