// Training sweeps over dense layers. To be included like vectors-inl.h, after activation-inl.h.
//
//   columns   z[u] = b[u] + sum over i of x[i] W[i][u]; lanes are units. Weights lie input by input.
//   rows      the same sums with lanes that are inputs. Weights lie unit by unit, so that the backward sums read them
//             in order; the eight lane sums of four units are turned into four sums of eight at the end.
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

// As vectors lose their attributes where they are arguments of a template.
template <int kLanes>
struct VectorOf {
  using Type = Wide;
};
template <>
struct VectorOf<8> {
  using Type = Float8;
};

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
template <int kLanes, int kVectors, TrainUpdate kUpdate, bool kEvaluate>
struct Columns {
  using Vector = typename VectorOf<kLanes>::Type;
  const TrainSweep s;  // a copy: what is stored could lie in the original, for all that the compiler knows
  int32_t u;
  Vector minusStep[kVectors];

  Columns(const TrainSweep& sweep, int32_t unit) : s(sweep), u(unit) {
    for (int v = 0; v < kVectors; ++v) minusStep[v] = -At<Vector>(s.step + u + v * kLanes);
  }

  // The pending step and the product of one input. Both inputs are spread before the first store, behind which they
  // would be read and spread again for every vector.
  inline __attribute__((always_inline)) void Tap(int32_t i, Vector (&sum)[kVectors]) {
    const int64_t place = static_cast<int64_t>(i) * s.stride + u;
    Vector previous, input;
    if constexpr (kUpdate != TrainUpdate::none) previous = s.previous[i] - Vector{};
    if constexpr (kEvaluate) input = s.input[i] - Vector{};
    for (int v = 0; v < kVectors; ++v) {
      Vector& W = At<Vector>(s.W + place + v * kLanes);
      Vector w = W;
      if constexpr (kUpdate == TrainUpdate::plain) w += minusStep[v] * previous;
      if constexpr (kUpdate == TrainUpdate::momentum) {
        Vector& velocity = At<Vector>(s.V + place + v * kLanes);
        const Vector decayed = velocity * s.momentum + minusStep[v] * previous;
        velocity = decayed;
        w += decayed;
      }
      if constexpr (kUpdate != TrainUpdate::none) W = w;
      if constexpr (kEvaluate) sum[v] += w * input;
    }
  }

  inline __attribute__((always_inline)) void Run() {
    const int32_t whole = s.inputs / 8 * 8;
    Vector total[kVectors] = {};
    for (int32_t lane = 0; lane < 8; lane += 2) {
      Vector even[kVectors] = {}, odd[kVectors] = {};
      // Two lanes at a time, whose sums wait less for each other. Longer bodies were slower.
#pragma GCC unroll 1
      for (int32_t i = lane; i < whole; i += 8) {
        Tap(i, even);
        Tap(i + 1, odd);
      }
      if (lane == 0)
        for (int32_t i = whole; i < s.inputs; ++i) Tap(i, even);
      for (int v = 0; v < kVectors; ++v) total[v] += even[v];
      for (int v = 0; v < kVectors; ++v) total[v] += odd[v];
    }
    if constexpr (kEvaluate)
      for (int v = 0; v < kVectors; ++v)
        At<Vector>(s.z + u + v * kLanes) = total[v] + At<Vector>(s.bias + u + v * kLanes);
  }
};

template <TrainUpdate kUpdate, bool kEvaluate>
void SweepColumns(const TrainSweep& sweep, int32_t begin, int32_t end) {
  // Spreading an input costs more in wide vectors: they pay where four of them share it.
  int32_t u = begin;
  for (; u + 4 * kWide <= end; u += 4 * kWide) Columns<kWide, 4, kUpdate, kEvaluate>(sweep, u).Run();
  for (; u + 32 <= end; u += 32) Columns<8, 4, kUpdate, kEvaluate>(sweep, u).Run();
  for (; u + 16 <= end; u += 16) Columns<8, 2, kUpdate, kEvaluate>(sweep, u).Run();
}

inline void TrainColumns(const TrainSweep& s, int32_t begin, int32_t end) {
  const bool evaluate = s.input != nullptr;
  switch (s.update) {
    case TrainUpdate::none:
      if (evaluate) SweepColumns<TrainUpdate::none, true>(s, begin, end);
      break;
    case TrainUpdate::plain:
      evaluate ? SweepColumns<TrainUpdate::plain, true>(s, begin, end)
               : SweepColumns<TrainUpdate::plain, false>(s, begin, end);
      break;
    case TrainUpdate::momentum:
      evaluate ? SweepColumns<TrainUpdate::momentum, true>(s, begin, end)
               : SweepColumns<TrainUpdate::momentum, false>(s, begin, end);
      break;
  }
}

// ---------------------------------------------------------------------------------------------------------- rows

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

// Four units, all inputs; their z.
inline __attribute__((always_inline)) Float4 FourRows(const TrainSums& s, int32_t u) {
  const int32_t whole = s.inputs / 8 * 8;
  Float8 sum[4] = {};
  const auto row = [&](int r) { return s.W + static_cast<int64_t>(u + r) * s.stride; };
  for (int32_t i = 0; i < whole; i += 8)
    for (int r = 0; r < 4; ++r) sum[r] += At<Float8>(row(r) + i) * At<Float8>(s.input + i);
  for (int32_t i = whole; i < s.inputs; ++i)
    for (int r = 0; r < 4; ++r) sum[r][0] += row(r)[i] * s.input[i];
  return AddLanes(sum[0], sum[1], sum[2], sum[3]) + At<Float4>(s.bias + u);
}

inline void TrainRows(const TrainSums& sums, int32_t begin, int32_t end) {
  // In stores no shorter than the activations' loads, which would wait for the memory otherwise.
  int32_t u = begin;
  for (; u + 4 < end; u += 8) {
    const Float4 low = FourRows(sums, u);
    At<Float8>(sums.z + u) = Join(low, FourRows(sums, u + 4));
  }
  if (u < end) At<Float8>(sums.z + u) = Join(FourRows(sums, u), Float4{});
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

// Some vectors of units side by side: the sums through the weights above, which then take their step.
template <int kLanes, int kVectors, TrainUpdate kUpdate>
inline __attribute__((always_inline)) void DeltaBlock(const TrainDeltas& all, int32_t i) {
  using Vector = typename VectorOf<kLanes>::Type;
  const TrainDeltas d = all;  // a copy, as above
  Vector sum[kVectors] = {}, a[kVectors];
  for (int v = 0; v < kVectors; ++v) a[v] = At<Vector>(d.a + i + v * kLanes);
  int64_t place = i;
  for (int32_t k = 0; k < d.units; ++k, place += d.stride) {
    const Vector delta = d.deltaAbove[k] - Vector{}, step = d.stepAbove[k] - Vector{};
    for (int v = 0; v < kVectors; ++v) {
      Vector& W = At<Vector>(d.W + place + v * kLanes);
      const Vector w = W;
      sum[v] += w * delta;
      if constexpr (kUpdate == TrainUpdate::plain) {
        W = w - a[v] * step;
      } else {
        Vector& velocity = At<Vector>(d.V + place + v * kLanes);
        const Vector decayed = velocity * d.momentum - a[v] * step;
        velocity = decayed;
        W = w + decayed;
      }
    }
  }
  constexpr int kParts = kWide / kLanes;
  for (int v = 0; v < kVectors; v += kParts) {
    if constexpr (kParts == 1)
      FinishDelta(d, i + v * kLanes, sum[v]);
    else
      FinishDelta(d, i + v * kLanes, Join(sum[v], sum[v + 1]));
  }
}

template <TrainUpdate kUpdate>
void LayerDeltas(const TrainDeltas& d, int32_t begin, int32_t end) {
  int32_t i = begin;
  for (; i + 4 * kWide <= end; i += 4 * kWide) DeltaBlock<kWide, 4, kUpdate>(d, i);
  for (; i + 32 <= end; i += 32) DeltaBlock<8, 4, kUpdate>(d, i);
  for (; i < end; i += 16) DeltaBlock<8, 2, kUpdate>(d, i);
}

inline void TrainLayerDeltas(const TrainDeltas& d, int32_t begin, int32_t end) {
  d.update == TrainUpdate::plain ? LayerDeltas<TrainUpdate::plain>(d, begin, end)
                                 : LayerDeltas<TrainUpdate::momentum>(d, begin, end);
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
