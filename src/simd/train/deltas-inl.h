// The deltas of a hidden layer, delta[i] = slope[i] * sum over k of W[k][i] deltaAbove[k], and the steps of the weights
// and biases that they were carried down by: lanes are the lower layer's units.
#pragma once

#include "simd/activation/logistic-inl.h"
#include "simd/train/columns-inl.h"

namespace norv::NORV_LEVEL {

// Whether any product is below the smallest normal float, where floats are farther apart; a sum of 0 gives an exact 0.
inline __attribute__((always_inline)) bool AnyTiny(Floats delta, Floats sum) {
  constexpr float kSmallestNormal = 0x1p-126f;
  return AnyLane((delta <= kSmallestNormal) & (delta >= -kSmallestNormal) & (sum != 0.0f));
}

// What the exact slopes give where the short ones leave it open.
[[gnu::noinline]] inline Floats ExactLogisticProduct(const float* z, Floats sum) {
  const auto product = [z](int32_t k, HalfFloats half) {
    return Narrow(Logistic::df(Widen(Load<HalfFloats>(z + k))) * Widen(half));
  };
  return Join(product(0, LowHalf(sum)), product(kDoubleLanes, HighHalf(sum)));
}

// slope times sum in double precision, rounded, then clipped so that a NaN stays one.
inline __attribute__((always_inline)) Floats DeltaOf(const TrainDeltas& d, int32_t i, Floats sum) {
  const Doubles first = Load<Doubles>(d.slope + i) * Widen(LowHalf(sum));
  const Doubles second = Load<Doubles>(d.slope + i + kDoubleLanes) * Widen(HighHalf(sum));
  Floats delta = Join(Narrow(first), Narrow(second));
  if (d.z && __builtin_expect(AnyNearMiddle(first, second) || AnyTiny(delta, sum), 0))
    delta = ExactLogisticProduct(d.z + i, sum);
  if (d.bound == 0) return delta;
  const Floats bound = Fill<Floats>(d.bound);
  delta = bound < delta ? bound : delta;
  return delta < -bound ? -bound : delta;
}

inline __attribute__((always_inline)) void FinishDelta(const TrainDeltas& d, int32_t i, Floats sum) {
  const Floats delta = DeltaOf(d, i, sum);
  const Floats step = delta * d.nu;
  Store(delta, d.delta + i);
  Store(step, d.step + i);
  const Floats bias = Load<Floats>(d.bias + i);
  if (d.update == TrainUpdate::plain) {
    Store(bias - step, d.bias + i);
  } else {
    const Floats velocity = Load<Floats>(d.vb + i) * d.momentum - step;
    Store(velocity, d.vb + i);
    Store(bias + velocity, d.bias + i);
  }
}

// Some vectors of units side by side: the sums through the weights above, which then take their step.
template <int lanes, int vectors, TrainUpdate update>
inline __attribute__((always_inline)) void DeltaBlock(const TrainDeltas& all, int32_t i) {
  using Vector = Vec<float, lanes>;
  const TrainDeltas d = all;  // a copy: what is stored could lie in the original, for all that the compiler knows
  Vector sum[vectors] = {}, a[vectors];
  for (int v = 0; v < vectors; ++v) a[v] = Load<Vector>(d.a + i + v * lanes);
  int64_t place = i;
  for (int32_t k = 0; k < d.units; ++k, place += d.stride) {
    const Vector delta = Fill<Vector>(d.deltaAbove[k]), step = Fill<Vector>(d.stepAbove[k]);
    for (int v = 0; v < vectors; ++v) {
      float* W = d.W + place + v * lanes;
      const Vector w = Load<Vector>(W);
      sum[v] += w * delta;
      if constexpr (update == TrainUpdate::plain) {
        Store(w - a[v] * step, W);
      } else {
        float* V = d.V + place + v * lanes;
        const Vector velocity = Load<Vector>(V) * d.momentum - a[v] * step;
        Store(velocity, V);
        Store(w + velocity, W);
      }
    }
  }
  constexpr int kParts = kFloatLanes / lanes;
  for (int v = 0; v < vectors; v += kParts) {
    if constexpr (kParts == 1)
      FinishDelta(d, i + v * lanes, sum[v]);
    else
      FinishDelta(d, i + v * lanes, Join(sum[v], sum[v + 1]));
  }
}

template <TrainUpdate update>
void LayerDeltas(const TrainDeltas& d, int32_t begin, int32_t end) {
  int32_t i = begin;
  for (; i + 4 * kFloatLanes <= end; i += 4 * kFloatLanes) DeltaBlock<kFloatLanes, 4, update>(d, i);
  for (; i + 4 * kUpToEight <= end; i += 4 * kUpToEight) DeltaBlock<kUpToEight, 4, update>(d, i);
  for (; i < end; i += kTrainBlock) DeltaBlock<kUpToEight, kTrainBlock / kUpToEight, update>(d, i);
}

inline void TrainLayerDeltas(const TrainDeltas& d, int32_t begin, int32_t end) {
  d.update == TrainUpdate::plain ? LayerDeltas<TrainUpdate::plain>(d, begin, end)
                                 : LayerDeltas<TrainUpdate::momentum>(d, begin, end);
}

}  // namespace norv::NORV_LEVEL
