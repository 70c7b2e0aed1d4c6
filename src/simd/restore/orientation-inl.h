// The structure tensor of a row and its direction.
#pragma once

#include "simd/restore/cells-inl.h"

namespace norv::NORV_LEVEL {
namespace {

void Tensor(float* j11, float* j12, float* j22, CellRow x, int64_t n) {
  ForRow(n, [&]<typename V>(int64_t i) {
    const V d1 = First<V>(x, i), d2 = Second<V>(x, i);
    Store(d1 * d1, j11 + i);
    Store(d1 * d2, j12 + i);
    Store(d2 * d2, j22 + i);
  });
}

constexpr float kNoDirection = 1e-8f;

struct Directions {
  UpToEight u1, u2;
};

// The unit vector at half the angle of (difference, 2 mixed) has the direction of (length + difference, 2 mixed), or
// its mirror image at the diagonal where that sum would cancel. Tensors whose fourth powers a float does not hold are
// made smaller.
inline Directions DirectionsOf(UpToEight j11, UpToEight mixed, UpToEight j22) {
  const UpToEight difference = j11 - j22, sizeOfMixed = Abs(mixed), size = Abs(difference);
  const UpToEight scale = (sizeOfMixed > 1e8f) | (size > 1e8f) ? UpToEight{} + 0x1p-70f : UpToEight{} + 1;
  const UpToEight a = scale * size, b = 2 * (scale * sizeOfMixed), length = Sqrt(a * a + b * b), sum = length + a;
  const UpToEight norm = Sqrt(2 * length * sum), larger = sum / norm, smaller = b / norm;
  const auto none = (sizeOfMixed < kNoDirection) & (size < kNoDirection), right = difference >= 0;
  const UpToEight sine = right ? smaller : larger;
  return {none ? UpToEight{} : (right ? larger : smaller), none ? UpToEight{} : (mixed < 0 ? -sine : sine)};
}

void Direction(float* u1, float* u2, const float* j11, const float* j12, const float* j22, int64_t n) {
  int64_t i = 0;
  for (; i + kUpToEight <= n; i += kUpToEight) {
    const Directions u = DirectionsOf(Load<UpToEight>(j11 + i), Load<UpToEight>(j12 + i), Load<UpToEight>(j22 + i));
    Store(u.u1, u1 + i);
    Store(u.u2, u2 + i);
  }
  if (i == n) return;
  const auto rest = [&](const float* row) { return LoadPart<UpToEight>(row + i, n - i); };
  const Directions u = DirectionsOf(rest(j11), rest(j12), rest(j22));
  StorePart(u.u1, u1 + i, n - i);
  StorePart(u.u2, u2 + i, n - i);
}

}  // namespace
}  // namespace norv::NORV_LEVEL
