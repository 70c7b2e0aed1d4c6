#include "restore/weights.h"

#include <cmath>

#include "raster/edges.h"
#include "simd/math.h"
#include "simd/restore_kernels.h"

namespace norv {
namespace {

void ApplyLorentzian(float* values, int64_t n, const Weighting& weighting, bool squared) {
  // The isotropic measure takes its constant in single precision, on purpose.
  const double sigma = squared ? static_cast<double>(weighting.delta * 1.4142135f)
                               : static_cast<double>(weighting.delta) * 1.4142135623730951;
  const double lambda = static_cast<double>(weighting.lambda);
  for (int64_t i = 0; i < n; ++i) {
    const double value = static_cast<double>(values[i]), g2 = squared ? value : value * value;
    const double w = g2 > 1e-10 ? lambda * std::sqrt(Log(1 + g2 / (sigma * sigma)) / g2) : lambda / sigma;
    values[i] = static_cast<float>(w);
  }
}

// Huber's penalty beyond delta with t = g / delta: 1 + (2 / p)(t^p - 1), which is 2 t - 1 for p = 1.
double ShapedPenalty(double t, double p) { return p > 0 ? 1 + 2 / p * (Pow(t, p) - 1) : 1 + 2 * Log(t); }

void ApplyShaped(float* values, int64_t n, const Weighting& weighting, bool squared) {
  const double lambda = static_cast<double>(weighting.lambda), delta = static_cast<double>(weighting.delta);
  const double p = static_cast<double>(weighting.shape);
  for (int64_t i = 0; i < n; ++i) {
    const double value = static_cast<double>(values[i]), g = squared ? std::sqrt(value) : std::abs(value);
    const double w = g <= delta ? lambda : lambda * delta * std::sqrt(ShapedPenalty(g / delta, p)) / g;
    values[i] = static_cast<float>(w);
  }
}

// Weights of the mirrored cells of every row, measured by a kernel.
template <typename Measure>
void WeighCells(matrix& w, const matrix& x, const Weighting& weighting, const Measure& measure) {
  w.dim(x.m, x.n);
  for (int32_t r = 0; r < x.n; ++r) {
    ForCells(x, r, [&](CellRow cells, int64_t c, int64_t n) { measure(w.z[r] + c, cells, r, c, n); });
    ApplyRule(w.z[r], x.m, weighting, false);
  }
}

}  // namespace

void ApplyRule(float* values, int64_t n, const Weighting& weighting, bool squared) {
  switch (weighting.rule) {
    case Rule::huber:
      if (squared) ActiveRestoreKernels().squareRoot(values, n);
      return ActiveRestoreKernels().huber(values, weighting.lambda, weighting.delta, n);
    case Rule::lorentzian:
      return ApplyLorentzian(values, n, weighting, squared);
    case Rule::shaped:
      return ApplyShaped(values, n, weighting, squared);
  }
}

void WeighIsotropic(matrix& w, const matrix& x, const Weighting& weighting) {
  w.dim(x.m - 1, x.n - 1);
  for (int32_t r = 0; w.mn > 0 && r < w.n; ++r) {
    ActiveRestoreKernels().measureIsotropic(w.z[r], {x.z[r], x.z[r + 1], 1}, w.m);
    ApplyRule(w.z[r], w.m, weighting, true);
  }
}

void WeighCross(matrix& w, const matrix& x, const OrientationField& field, const Weighting& weighting) {
  WeighCells(w, x, weighting, [&](float* out, CellRow cells, int32_t r, int64_t c, int64_t n) {
    ActiveRestoreKernels().measureCross(out, cells, field.Row(r, c), n);
  });
}

void WeighDot(matrix& w, const matrix& x, const OrientationField& field, const Weighting& weighting) {
  WeighCells(w, x, weighting, [&](float* out, CellRow cells, int32_t r, int64_t c, int64_t n) {
    ActiveRestoreKernels().measureDot(out, cells, field.Row(r, c), n);
  });
}

void WeighAxes(matrix& across, matrix& down, const matrix& x, const Weighting& weighting) {
  across.dim(x.m - 1, x.n);
  for (int32_t r = 0; across.mn > 0 && r < across.n; ++r) {
    ActiveRestoreKernels().measureDifference(across.z[r], x.z[r] + 1, x.z[r], across.m);
    ApplyRule(across.z[r], across.m, weighting, false);
  }
  down.dim(x.m, x.n - 1);
  for (int32_t r = 0; down.mn > 0 && r < down.n; ++r) {
    ActiveRestoreKernels().measureDifference(down.z[r], x.z[r + 1], x.z[r], down.m);
    ApplyRule(down.z[r], down.m, weighting, false);
  }
}

// ------------------------------------------------------------------------------------------------ listed pixels

PixelList::PixelList(const BitMask& mask) : begin(static_cast<size_t>(mask.height) + 1, 0) {
  for (int32_t r = 0; r < mask.height; ++r) {
    for (int32_t c = 0; c < mask.width; ++c)
      if (mask.Get(r, c)) column.push_back(c);
    begin[r + 1] = static_cast<int64_t>(column.size());
  }
}

CellDifferences CellAt(const matrix& x, int32_t r, int32_t c) {
  const float *upper = x.z[r], *lower = x.z[MirrorIndex(int64_t{r} + 1, x.n)];
  const int64_t right = MirrorIndex(int64_t{c} + 1, x.m);
  return {lower[right] - upper[c], lower[c] - upper[right]};
}

void WeighListed(std::vector<float>& w, const matrix& x, const OrientationField& field, const PixelList& pixels,
                 const Weighting& weighting) {
  w.resize(pixels.column.size());
  for (int32_t r = 0; r + 1 < static_cast<int32_t>(pixels.begin.size()); ++r)
    for (int64_t k = pixels.begin[r]; k < pixels.begin[r + 1]; ++k) {
      const int32_t c = pixels.column[k];
      const auto [d1, d2] = CellAt(x, r, c);
      w[k] = d1 * field.u2.z[r][c] - d2 * field.u1.z[r][c];
    }
  ApplyRule(w.data(), static_cast<int64_t>(w.size()), weighting, false);
}

}  // namespace norv
