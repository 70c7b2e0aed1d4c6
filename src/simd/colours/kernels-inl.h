// The kernels of colours for one level: lanes are the pixels.
#include "simd/colours/kernels.h"
#include "simd/vector-inl.h"

namespace norv::NORV_LEVEL {
namespace {

struct Colours {
  Doubles channel[3];
};

inline HalfFloats Combined(const double (&row)[3], const Colours& from) {
  return Narrow(row[0] * from.channel[0] + row[1] * from.channel[1] + row[2] * from.channel[2]);
}

inline void Linear(float* const* to, const float* const* from, const double (*matrix)[3], int32_t n) {
  float *const p = to[0], *const q = to[1], *const r = to[2];
  const float *const a = from[0], *const b = from[1], *const c = from[2];
  int32_t i = 0;
  for (; i + kDoubleLanes <= n; i += kDoubleLanes) {
    const Colours colours = {
        {Widen(Load<HalfFloats>(a + i)), Widen(Load<HalfFloats>(b + i)), Widen(Load<HalfFloats>(c + i))}};
    Store(Combined(matrix[0], colours), p + i);
    Store(Combined(matrix[1], colours), q + i);
    Store(Combined(matrix[2], colours), r + i);
  }
  if (i == n) return;
  Colours colours;
  for (int k = 0; k < 3; ++k) colours.channel[k] = Widen(LoadPart<HalfFloats>(from[k] + i, n - i));
  for (int k = 0; k < 3; ++k) StorePart(Combined(matrix[k], colours), to[k] + i, n - i);
}

inline void Invert(float* const* to, const float* const* from, int32_t n) {
  for (int k = 0; k < 3; ++k) {
    int32_t i = 0;
    for (; i + kFloatLanes <= n; i += kFloatLanes) Store(255.0f - Load<Floats>(from[k] + i), to[k] + i);
    for (; i < n; ++i) to[k][i] = 255.0f - from[k][i];
  }
}

}  // namespace

extern const ColourKernels kTable;
const ColourKernels kTable = {.level = kCompiledLevel, .linear = Linear, .invert = Invert};

}  // namespace norv::NORV_LEVEL
