#include "net/activation.h"

#include "platform/assert.h"

#define NORV_LEVEL scalar
#define NORV_VECTOR_BYTES 32
#include "simd/activation/kinds-inl.h"

namespace norv {

namespace {

template <typename List>
struct Rows;
template <typename... Kinds>
struct Rows<scalar::KindList<Kinds...>> {
  static constexpr Activation kRows[kActivationKinds] = {{nullptr, nullptr},
                                                         {Kinds::template f<double>, Kinds::template df<double>}...};
};

}  // namespace

const Activation& ActivationOf(int32_t kind) {
  NORV_ASSERT(kind >= 0 && kind < kActivationKinds);
  return Rows<scalar::AllKinds>::kRows[kind];
}

}  // namespace norv
