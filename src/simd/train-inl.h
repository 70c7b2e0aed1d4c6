// Training sweeps over dense layers. To be included like vectors-inl.h, after activation-inl.h.
//
//   columns   z[u] = b[u] + sum over i of x[i] W[i][u]; lanes are units. Weights lie input by input.
//   rows      the same sums with lanes that are inputs. Weights lie unit by unit, so that the backward sums read them
//   in
//             order; the eight lane sums of four units are turned into four sums of eight at the end.
//   activate  a = f(z) and df(z), which share what they have in common.
//   deltas    delta[i] = slope[i] * sum over k of W[k][i] deltaAbove[k]; lanes are the lower layer's units.
//
// In each sum the additions are those of the plain dot product: eight lane sums (index mod 8, the tail to lane 0), then
// lanes 1 to 7 added to lane 0 in order. No multiply-add is ever fused.

namespace norv::NORV_LEVEL {

using Float4 = float __attribute__((vector_size(16), may_alias));
using Float8 = float __attribute__((vector_size(32), may_alias));
#ifdef __AVX512F__
inline constexpr int32_t kWide = 16;
#else
inline constexpr int32_t kWide = 8;
#endif
using Wide = float __attribute__((vector_size(4 * kWide), may_alias));

template <class V, class T>
inline V& At(T* p) {
  return *reinterpret_cast<V*>(p);
}
template <class V, class T>
inline const V& At(const T* p) {
  return *reinterpret_cast<const V*>(p);
}

// ------------------------------------------------------------------------------------------------------- columns

// Some vectors of units side by side, all inputs.
template <int kVectors, TrainUpdate kUpdate, bool kEvaluate>
struct Columns {
  const TrainSweep& s;
  int32_t u;
  Wide minusStep[kVectors], sum[kVectors];

  explicit Columns(const TrainSweep& sweep, int32_t unit) : s(sweep), u(unit) {
    for (int v = 0; v < kVectors; ++v) minusStep[v] = -At<Wide>(s.step + u + v * kWide);
  }

  // The pending step and the product of one input.
  inline __attribute__((always_inline)) void Tap(int32_t i) {
    float* W = s.W + static_cast<int64_t>(i) * s.stride + u;
    for (int v = 0; v < kVectors; ++v) {
      Wide w = At<Wide>(W + v * kWide);
      if constexpr (kUpdate == TrainUpdate::plain) w += minusStep[v] * s.previous[i];
      if constexpr (kUpdate == TrainUpdate::momentum) {
        Wide& velocity = At<Wide>(s.V + static_cast<int64_t>(i) * s.stride + u + v * kWide);
        const Wide decayed = velocity * s.momentum + minusStep[v] * s.previous[i];
        velocity = decayed;
        w += decayed;
      }
      if constexpr (kUpdate != TrainUpdate::none) At<Wide>(W + v * kWide) = w;
      if constexpr (kEvaluate) sum[v] += w * s.input[i];
    }
  }

  inline __attribute__((always_inline)) void Run() {
    const int32_t whole = s.inputs / 8 * 8;
    Wide total[kVectors] = {};
    for (int32_t lane = 0; lane < 8; ++lane) {
      for (int v = 0; v < kVectors; ++v) sum[v] = Wide{};
      for (int32_t i = lane; i < whole; i += 8) Tap(i);
      if (lane == 0)
        for (int32_t i = whole; i < s.inputs; ++i) Tap(i);
      for (int v = 0; v < kVectors; ++v) total[v] += sum[v];
    }
    if constexpr (kEvaluate)
      for (int v = 0; v < kVectors; ++v) At<Wide>(s.z + u + v * kWide) = total[v] + At<Wide>(s.bias + u + v * kWide);
  }
};

template <TrainUpdate kUpdate, bool kEvaluate>
struct SweepColumns {
  static void Run(const TrainSweep& sweep, int32_t begin, int32_t end) {
    constexpr int kMost = 4;
    int32_t u = begin;
    for (; u + kMost * kWide <= end; u += kMost * kWide) Columns<kMost, kUpdate, kEvaluate>(sweep, u).Run();
    for (; u + 2 * kWide <= end; u += 2 * kWide) Columns<2, kUpdate, kEvaluate>(sweep, u).Run();
    for (; u < end; u += kWide) Columns<1, kUpdate, kEvaluate>(sweep, u).Run();
  }
};

// ---------------------------------------------------------------------------------------------------------- rows

inline Float8 Broadcast(float x) { return Float8{x, x, x, x, x, x, x, x}; }

template <class Half>
inline auto Join(Half low, Half high) {
  if constexpr (sizeof(Half) == 16)
    return __builtin_shufflevector(low, high, 0, 1, 2, 3, 4, 5, 6, 7);
  else
    return __builtin_shufflevector(low, high, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
}

// Four vectors of eight lane sums become the four sums: lanes 1 to 7 added to lane 0 in order.
inline __attribute__((always_inline)) Float4 AddLanes(Float8 a, Float8 b, Float8 c, Float8 d) {
  const Float8 ab02 = __builtin_shufflevector(a, b, 0, 8, 1, 9, 4, 12, 5, 13);
  const Float8 cd02 = __builtin_shufflevector(c, d, 0, 8, 1, 9, 4, 12, 5, 13);
  const Float8 ab13 = __builtin_shufflevector(a, b, 2, 10, 3, 11, 6, 14, 7, 15);
  const Float8 cd13 = __builtin_shufflevector(c, d, 2, 10, 3, 11, 6, 14, 7, 15);
  // Lane k of the four units in the lower half, lane k + 4 in the upper one.
  const Float8 lane[4] = {__builtin_shufflevector(ab02, cd02, 0, 1, 8, 9, 4, 5, 12, 13),
                          __builtin_shufflevector(ab02, cd02, 2, 3, 10, 11, 6, 7, 14, 15),
                          __builtin_shufflevector(ab13, cd13, 0, 1, 8, 9, 4, 5, 12, 13),
                          __builtin_shufflevector(ab13, cd13, 2, 3, 10, 11, 6, 7, 14, 15)};
  Float4 total = __builtin_shufflevector(lane[0], lane[0], 0, 1, 2, 3);
  for (int k = 1; k < 4; ++k) total += __builtin_shufflevector(lane[k], lane[k], 0, 1, 2, 3);
  for (int k = 0; k < 4; ++k) total += __builtin_shufflevector(lane[k], lane[k], 4, 5, 6, 7);
  return total;
}

// One weight with its pending step.
template <TrainUpdate kUpdate>
inline __attribute__((always_inline)) float UpdatedWeight(const TrainSweep& s, int32_t u, int32_t i) {
  float& w = s.W[static_cast<int64_t>(u) * s.stride + i];
  if constexpr (kUpdate == TrainUpdate::plain) w += -s.step[u] * s.previous[i];
  if constexpr (kUpdate == TrainUpdate::momentum) {
    float& velocity = s.V[static_cast<int64_t>(u) * s.stride + i];
    velocity = velocity * s.momentum + -s.step[u] * s.previous[i];
    w += velocity;
  }
  return w;
}

// Four units, all inputs; their z.
template <TrainUpdate kUpdate, bool kEvaluate>
inline __attribute__((always_inline)) Float4 FourRows(const TrainSweep& s, int32_t u) {
  const int32_t whole = s.inputs / 8 * 8;
  Float8 sum[4] = {};
  Float8 minusStep[4];
  for (int r = 0; r < 4; ++r) minusStep[r] = Broadcast(-s.step[u + r]);
  for (int32_t i = 0; i < whole; i += 8)
    for (int r = 0; r < 4; ++r) {
      const int64_t place = static_cast<int64_t>(u + r) * s.stride + i;
      Float8 w = At<Float8>(s.W + place);
      if constexpr (kUpdate == TrainUpdate::plain) w += minusStep[r] * At<Float8>(s.previous + i);
      if constexpr (kUpdate == TrainUpdate::momentum) {
        const Float8 velocity = At<Float8>(s.V + place) * s.momentum + minusStep[r] * At<Float8>(s.previous + i);
        At<Float8>(s.V + place) = velocity;
        w += velocity;
      }
      if constexpr (kUpdate != TrainUpdate::none) At<Float8>(s.W + place) = w;
      if constexpr (kEvaluate) sum[r] += w * At<Float8>(s.input + i);
    }
  for (int32_t i = whole; i < s.inputs; ++i)
    for (int r = 0; r < 4; ++r) {
      const float w = UpdatedWeight<kUpdate>(s, u + r, i);
      if constexpr (kEvaluate) sum[r][0] += w * s.input[i];
    }
  if constexpr (!kEvaluate) return Float4{};
  return AddLanes(sum[0], sum[1], sum[2], sum[3]) + At<Float4>(s.bias + u);
}

template <TrainUpdate kUpdate, bool kEvaluate>
struct SweepRows {
  static void Run(const TrainSweep& sweep, int32_t begin, int32_t end) {
    // In stores no shorter than the activations' loads, which would wait for the memory otherwise.
    const auto store = [&](int32_t u, Float8 z) {
      if constexpr (kEvaluate) At<Float8>(sweep.z + u) = z;
    };
    int32_t u = begin;
    for (; u + 4 < end; u += 8) {
      const Float4 low = FourRows<kUpdate, kEvaluate>(sweep, u);
      store(u, Join(low, FourRows<kUpdate, kEvaluate>(sweep, u + 4)));
    }
    if (u < end) store(u, Join(FourRows<kUpdate, kEvaluate>(sweep, u), Float4{}));
  }
};

// Which of the six sweeps is meant.
template <template <TrainUpdate, bool> class Sweep>
void ChooseSweep(const TrainSweep& s, int32_t begin, int32_t end) {
  const bool evaluate = s.input != nullptr;
  switch (s.update) {
    case TrainUpdate::none:
      if (evaluate) Sweep<TrainUpdate::none, true>::Run(s, begin, end);
      break;
    case TrainUpdate::plain:
      evaluate ? Sweep<TrainUpdate::plain, true>::Run(s, begin, end)
               : Sweep<TrainUpdate::plain, false>::Run(s, begin, end);
      break;
    case TrainUpdate::momentum:
      evaluate ? Sweep<TrainUpdate::momentum, true>::Run(s, begin, end)
               : Sweep<TrainUpdate::momentum, false>::Run(s, begin, end);
      break;
  }
}

inline void TrainColumns(const TrainSweep& sweep, int32_t begin, int32_t end) {
  ChooseSweep<SweepColumns>(sweep, begin, end);
}

inline void TrainRows(const TrainSweep& sweep, int32_t begin, int32_t end) {
  ChooseSweep<SweepRows>(sweep, begin, end);
}

// -------------------------------------------------------------------------------------------------------- deltas

// Whether any product is below the smallest normal float, where floats are farther apart; a sum of 0 gives an exact 0.
inline __attribute__((always_inline)) bool AnyTiny(Wide delta, Wide sum) {
  constexpr float kSmallestNormal = 0x1p-126f;
#if NORV_VECTOR_BYTES == 64
  return _mm512_cmp_ps_mask(_mm512_abs_ps(__m512(delta)), _mm512_set1_ps(kSmallestNormal), _CMP_LE_OQ) &
         _mm512_cmp_ps_mask(__m512(sum), _mm512_setzero_ps(), _CMP_NEQ_UQ);
#else
  const auto tiny = (delta <= kSmallestNormal) & (delta >= -kSmallestNormal) & (sum != 0.0f);
  return !_mm256_testz_si256(__m256i(tiny), __m256i(tiny));
#endif
}

// What the exact slopes give where the short ones leave it open.
[[gnu::noinline]] inline Wide ExactLogisticProduct(const float* z, Wide sum) {
  Wide product;
  for (int32_t k = 0; k < kWide; k += kDoubleLanes)
    Store(Narrow(Logistic::df(Widen(Load<HalfFloats>(z + k))) * Widen(Load<HalfFloats>(&At<float>(&sum) + k))),
          &At<float>(&product) + k);
  return product;
}

// slope times sum in double precision, rounded, then clipped so that a NaN stays one.
inline __attribute__((always_inline)) Wide DeltaOf(const TrainDeltas& d, int32_t i, Wide sum) {
  const HalfFloats* half = reinterpret_cast<const HalfFloats*>(&sum);
  const Doubles first = Load<Doubles>(d.slope + i) * Widen(half[0]);
  const Doubles second = Load<Doubles>(d.slope + i + kDoubleLanes) * Widen(half[1]);
  Wide delta = Join(Narrow(first), Narrow(second));
  if (d.z && __builtin_expect(AnyNearMiddle(first, second) || AnyTiny(delta, sum), 0))
    delta = ExactLogisticProduct(d.z + i, sum);
  if (d.bound == 0) return delta;
  const Wide bound = Wide{} + d.bound;
  delta = bound < delta ? bound : delta;
  return delta < -bound ? -bound : delta;
}

inline __attribute__((always_inline)) void FinishDelta(const TrainDeltas& d, int32_t i, Wide sum) {
  const Wide delta = DeltaOf(d, i, sum);
  const Wide step = delta * d.nu;
  At<Wide>(d.delta + i) = delta;
  At<Wide>(d.step + i) = step;
  if (d.update == TrainUpdate::plain) {
    At<Wide>(d.bias + i) -= step;
  } else {
    const Wide velocity = At<Wide>(d.vb + i) * d.momentum - step;
    At<Wide>(d.vb + i) = velocity;
    At<Wide>(d.bias + i) += velocity;
  }
}

template <int kVectors>
inline __attribute__((always_inline)) void DeltaBlock(const TrainDeltas& d, int32_t i) {
  Wide sum[kVectors] = {};
  const float* W = d.W + i;
  for (int32_t k = 0; k < d.units; ++k, W += d.stride)
    for (int v = 0; v < kVectors; ++v) sum[v] += At<Wide>(W + v * kWide) * d.deltaAbove[k];
  for (int v = 0; v < kVectors; ++v) FinishDelta(d, i + v * kWide, sum[v]);
}

inline void TrainLayerDeltas(const TrainDeltas& d, int32_t begin, int32_t end) {
  constexpr int kMost = 4;
  int32_t i = begin;
  for (; i + kMost * kWide <= end; i += kMost * kWide) DeltaBlock<kMost>(d, i);
  for (; i + 2 * kWide <= end; i += 2 * kWide) DeltaBlock<2>(d, i);
  for (; i < end; i += kWide) DeltaBlock<1>(d, i);
}

// --------------------------------------------------------------------------------------------------- activations

struct ValueAndSlope {
  Doubles value, slope;
};

template <typename Kind>
struct Both {
  static inline ValueAndSlope Of(Doubles x) { return {Kind::f(x), Kind::df(x)}; }
};

// Where f alone may cut off what no float can show, one exponential of the whole range serves both.
template <>
struct Both<Logistic> {
  static inline ValueAndSlope Of(Doubles x) {
    const Doubles s = 1.0 / (Exp(-x) + 1.0);
    return {s, (1.0 - s) * s};
  }
};
template <>
struct Both<CentredLogistic> {
  static inline ValueAndSlope Of(Doubles x) {
    const ValueAndSlope both = Both<Logistic>::Of(x);
    return {both.value - 0.5, both.slope};
  }
};
template <>
struct Both<ExponentialLinear> {
  static inline ValueAndSlope Of(Doubles x) {
    const Doubles e = Exp(x);
    return {x > 0.0 ? x : e - 1.0, x > 0.0 ? Fill<Doubles>(1) : e};
  }
};

template <typename Kind>
void ActivateRow(const float* z, int32_t n, float* a, double* slope) {
  for (int32_t i = 0; i < n; i += kDoubleLanes) {
    const ValueAndSlope both = Both<Kind>::Of(Widen(Load<HalfFloats>(z + i)));
    Store(Narrow(both.value), a + i);
    Store(both.slope, slope + i);
  }
}

// The slopes below rest on it: 1 - s of the exact ones has too few bits left beyond.
inline constexpr float kShortSlopeLimit = 9;

// exp(-x) s^2 is (1 - s) s with a relative error below 2^-38.7.
inline void ActivateLogistic(const float* z, int32_t n, float* a, double* slope) {
  for (int32_t i = 0; i < n; i += kFloatLanes) {
    const Doubles e0 = ShortExpOfNegative(Widen(Load<HalfFloats>(z + i)));
    const Doubles e1 = ShortExpOfNegative(Widen(Load<HalfFloats>(z + i + kDoubleLanes)));
    const Doubles s0 = 1.0 / (e0 + 1.0), s1 = 1.0 / (e1 + 1.0);
    // From -kShortRange to kShortSlopeLimit.
    constexpr float kCentre = (kShortSlopeLimit - kShortRange) / 2, kReach = (kShortSlopeLimit + kShortRange) / 2;
    if (__builtin_expect(AnyBeyond(Load<Floats>(z + i) - kCentre, kReach) || AnyNearMiddle(s0, s1), 0)) {
      ActivateRow<Logistic>(z + i, kFloatLanes, a + i, slope + i);
      continue;
    }
    Store(Narrow(s0), a + i);
    Store(Narrow(s1), a + i + kDoubleLanes);
    Store(s0 * s0 * e0, slope + i);
    Store(s1 * s1 * e1, slope + i + kDoubleLanes);
  }
}

template <typename List>
struct ActivateTable;
template <typename... Kinds>
struct ActivateTable<KindList<Kinds...>> {
  static constexpr TrainActivation kRows[] = {nullptr, ActivateRow<Kinds>...};
};

}  // namespace norv::NORV_LEVEL
