// The kernel table of one level. A level's file defines NORV_LEVEL and NORV_VECTOR_BYTES and includes this once.
//
// Everything is in the level's own namespace and nothing else with code in it is included: an inline function compiled
// for wide vectors must never be the copy that the linker keeps for machines without them.

#include <cstddef>
#include <cstdint>

#include "simd/kernels.h"

// clang-format off
#include "simd/vectors-inl.h"
#include "simd/math-inl.h"
#include "simd/activation-inl.h"
#include "simd/rows-inl.h"
#include "simd/logistic-inl.h"
#include "simd/linear-inl.h"
#include "simd/evaluate-inl.h"
// clang-format on

namespace norv::NORV_LEVEL {

// What the compiler was really asked for, as its predefined macros tell.
#if defined(__AVX512F__)
inline constexpr int kCompiledLevel = 2;
#elif defined(__AVX2__)
inline constexpr int kCompiledLevel = 1;
#else
inline constexpr int kCompiledLevel = 0;
#endif

extern const Kernels kKernels;
const Kernels kKernels = {
    .level = static_cast<VectorLevel>(kCompiledLevel),
    .dot = Dot,
    .addScaled = AddScaled,
    .add = Add,
    .scale = Scale,
    .evaluateLayer = EvaluateLayer,
    .activation = RowTables<AllKinds>::kActivation,
    .activationDerivative = RowTables<AllKinds>::kDerivative,
};

}  // namespace norv::NORV_LEVEL
