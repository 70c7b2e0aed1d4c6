// The activation kinds, each written once for a double and for a vector of doubles.
//
// Where f adds 1/2 or 1 to what it takes an exponential for, it may cut that off where it no longer shows. df keeps the
// whole range of doubles, as it is multiplied before it is rounded. A NaN takes the branch of a failed comparison.
#pragma once

#include "simd/activation/kinds.h"
#include "simd/math/angles-inl.h"
#include "simd/math/exponential-inl.h"

namespace norv::NORV_LEVEL {

// An exponential below exp(-kExpLimit) leaves a 1 that it is added to as it is, in double precision too.
inline constexpr double kExpLimit = 110;

template <typename V>
inline V LogisticDerivative(V x) {
  const V s = 1.0 / (Exp(-x) + 1.0);
  return (1.0 - s) * s;
}

struct Logistic {
  template <typename V>
  static V f(V x) {
    return 1.0 / (ExpAbove(-x, -kExpLimit) + 1.0);
  }
  template <typename V>
  static V df(V x) {
    return LogisticDerivative(x);
  }
};

struct CentredLogistic {
  template <typename V>
  static V f(V x) {
    return 1.0 / (ExpWithin(-x, kExpLimit) + 1.0) - 0.5;
  }
  template <typename V>
  static V df(V x) {
    return LogisticDerivative(x);
  }
};

struct ArcTangent {
  template <typename V>
  static V f(V x) {
    return Atan(x * 0.7853981633974483) * 0.3183098861837907;
  }
  template <typename V>
  static V df(V x) {
    return 0.25 / (x * x * 0.6168502750680849 + 1.0);
  }
};

struct QuarterIdentity {
  template <typename V>
  static V f(V x) {
    return 0.25 * x;
  }
  template <typename V>
  static V df(V) {
    return Fill<V>(0.25);
  }
};

struct QuarterRamp {
  template <typename V>
  static V f(V x) {
    return x >= 0.0 ? 0.25 * x : V{};
  }
  template <typename V>
  static V df(V x) {
    return x < 0.0 ? V{} : Fill<V>(0.25);
  }
};

struct QuarterLeakyRamp {
  template <typename V>
  static V f(V x) {
    return x >= 0.0 ? 0.25 * x : 0.0025 * x;
  }
  template <typename V>
  static V df(V x) {
    return x < 0.0 ? Fill<V>(0.0025) : Fill<V>(0.25);
  }
};

struct HalfSoftSign {
  template <typename V>
  static V f(V x) {
    const V half = 0.5 * x;
    return half * 0.5 / (Abs(half) + 1.0);
  }
  template <typename V>
  static V df(V x) {
    const V d = 0.5 * Abs(x) + 1.0;
    return 0.25 / (d * d);
  }
};

struct SoftPlus {
  template <typename V>
  static V f(V x) {
    return Log<V>(Exp(x) + 1.0);
  }
  template <typename V>
  static V df(V x) {
    return 1.0 / (Exp(-x) + 1.0);
  }
};

struct QuarterSoftPlus {
  template <typename V>
  static V f(V x) {
    return 0.25 * SoftPlus::f(x);
  }
  template <typename V>
  static V df(V x) {
    return 0.25 / (Exp(-x) + 1.0);
  }
};

struct RampSoftSign {
  template <typename V>
  static V f(V x) {
    const V half = 0.5 * x;
    return x >= 0.0 ? 0.25 * x : half * 0.5 / (1.0 - half);
  }
  template <typename V>
  static V df(V x) {
    const V d = 1.0 - 0.5 * x;
    return x >= 0.0 ? Fill<V>(0.25) : 0.25 / (d * d);
  }
};

struct QuarterRampExp {
  template <typename V>
  static V f(V x) {
    const V quarter = 0.25 * x;
    return x >= 0.0 ? quarter : Exp(x) * quarter;
  }
  template <typename V>
  static V df(V x) {
    return x >= 0.0 ? Fill<V>(0.25) : Exp(x) * 0.25 * (x + 1.0);
  }
};

struct ExponentialLinear {
  template <typename V>
  static V f(V x) {
    return x > 0.0 ? x : ExpWithin(x, kExpLimit) - 1.0;
  }
  template <typename V>
  static V df(V x) {
    return x > 0.0 ? Fill<V>(1) : Exp(x);
  }
};

struct Identity {
  template <typename V>
  static V f(V x) {
    return x;
  }
  template <typename V>
  static V df(V) {
    return Fill<V>(1);
  }
};

struct Ramp {
  template <typename V>
  static V f(V x) {
    return x < 0.0 ? V{} : x;
  }
  template <typename V>
  static V df(V x) {
    return x < 0.0 ? V{} : Fill<V>(1);
  }
};

struct LeakyRamp {
  template <typename V>
  static V f(V x) {
    return x >= 0.0 ? x : 0.01 * x;
  }
  template <typename V>
  static V df(V x) {
    return x < 0.0 ? Fill<V>(0.01) : Fill<V>(1);
  }
};

struct SoftSign {
  template <typename V>
  static V f(V x) {
    return 0.5 * x / (Abs(x) + 1.0);
  }
  template <typename V>
  static V df(V x) {
    const V d = Abs(x) + 1.0;
    return 0.5 / (d * d);
  }
};

struct RampExp {
  template <typename V>
  static V f(V x) {
    return x > 0.0 ? x : Exp(x) * x;
  }
  template <typename V>
  static V df(V x) {
    return x > 0.0 ? Fill<V>(1) : Exp(x) * (x + 1.0);
  }
};

template <typename... Kinds>
struct KindList {
  static constexpr int32_t kCount = sizeof...(Kinds);
};

// In the order of their numbers, from kind 1 on.
using AllKinds = KindList<Logistic, CentredLogistic, ArcTangent, QuarterIdentity, QuarterRamp, QuarterLeakyRamp,
                          HalfSoftSign, QuarterSoftPlus, RampSoftSign, QuarterRampExp, ExponentialLinear, Identity,
                          Ramp, LeakyRamp, SoftSign, SoftPlus, RampExp>;
static_assert(AllKinds::kCount + 1 == kActivationKinds);

}  // namespace norv::NORV_LEVEL
