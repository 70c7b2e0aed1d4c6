#include "restore/terms/weights.h"

#include <bit>
#include <iterator>

#include "raster/edges.h"
#include "simd/restore/kernels.h"

namespace norv {
namespace {

// The isotropic measure, which is squared, takes its constant in single precision, on purpose.
double Sigma(float delta, bool squared) {
  return squared ? static_cast<double>(delta * 1.4142135f) : static_cast<double>(delta) * 1.4142135623730951;
}

struct RuleRow {
  Rule rule;
  bool takesSquares;  // of measures that are squared; other rules want their root
  void (*apply)(float* values, int64_t n, const Weighting& weighting, bool squared);
};

// By ascending rule.
constexpr RuleRow kRules[] = {
    {Rule::huber, false,
     [](float* values, int64_t n, const Weighting& w, bool) {
       ActiveRestoreKernels().huber(values, w.lambda, w.delta, n);
     }},
    {Rule::lorentzian, true,
     [](float* values, int64_t n, const Weighting& w, bool squared) {
       ActiveRestoreKernels().lorentzian(values, static_cast<double>(w.lambda), Sigma(w.delta, squared), squared, n);
     }},
    {Rule::shaped, false,
     [](float* values, int64_t n, const Weighting& w, bool) {
       ActiveRestoreKernels().shaped(values, w.lambda, w.delta, w.shape, n);
     }},
};
static_assert([] {
  for (size_t i = 0; i < std::size(kRules); ++i)
    if (kRules[i].rule != static_cast<Rule>(i)) return false;
  return std::size(kRules) == static_cast<size_t>(Rule::shaped) + 1;
}());

// Weights of the mirrored cells of every row; `measure` fills a run of a row with their g.
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
  const RuleRow& row = kRules[static_cast<size_t>(weighting.rule)];
  if (squared && !row.takesSquares) ActiveRestoreKernels().squareRoot(values, n);
  row.apply(values, n, weighting, squared);
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

PixelList::PixelList(const BitMask& mask, int32_t rows) : begin(static_cast<size_t>(rows) + 1, 0) {
  size_t count = 0;
  for (const uint32_t word : mask.words) count += static_cast<size_t>(std::popcount(word));
  column.reserve(count);
  for (int32_t r = 0; r < rows; ++r) {
    for (int32_t c = 0; c < mask.width && r < mask.height; ++c)
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
