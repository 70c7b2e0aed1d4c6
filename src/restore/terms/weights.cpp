#include "restore/terms/weights.h"

#include <algorithm>
#include <iterator>
#include <numeric>

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

template <typename Body>
void ForEachRow(const matrix& w, Range rows, StandingTeam& team, const Body& body) {
  const Range which = RowsWithin(rows, w.n);
  ForRows(team, w.m, which.end - which.begin, [&](int64_t begin, int64_t end) {
    for (int64_t r = which.begin + begin; r < which.begin + end; ++r) body(static_cast<int32_t>(r));
  });
}

// Weights of the mirrored cells of every row; `measure` fills a run of a row with their g.
template <typename Measure>
void WeighCells(matrix& w, const matrix& x, const Weighting& weighting, StandingTeam& team, Range rows,
                const Measure& measure) {
  w.dim(x.m, x.n);
  ForEachRow(w, rows, team, [&](int32_t r) {
    ForCells(x, r, [&](CellRow cells, int64_t c, int64_t n) { measure(w.z[r] + c, cells, r, c, n); });
    ApplyRule(w.z[r], x.m, weighting, false);
  });
}

}  // namespace

void ApplyRule(float* values, int64_t n, const Weighting& weighting, bool squared) {
  const RuleRow& row = kRules[static_cast<size_t>(weighting.rule)];
  if (squared && !row.takesSquares) ActiveRestoreKernels().squareRoot(values, n);
  row.apply(values, n, weighting, squared);
}

void WeighIsotropic(matrix& w, const matrix& x, const Weighting& weighting, StandingTeam& team, Range rows) {
  w.dim(x.m - 1, x.n - 1);
  ForEachRow(w, rows, team, [&](int32_t r) {
    ActiveRestoreKernels().measureIsotropic(w.z[r], {x.z[r], x.z[r + 1], 1}, w.m);
    ApplyRule(w.z[r], w.m, weighting, true);
  });
}

void WeighCross(matrix& w, const matrix& x, const OrientationField& field, const Weighting& weighting,
                StandingTeam& team, Range rows) {
  WeighCells(w, x, weighting, team, rows, [&](float* out, CellRow cells, int32_t r, int64_t c, int64_t n) {
    ActiveRestoreKernels().measureCross(out, cells, field.Row(r, c), n);
  });
}

void WeighDot(matrix& w, const matrix& x, const OrientationField& field, const Weighting& weighting, StandingTeam& team,
              Range rows) {
  WeighCells(w, x, weighting, team, rows, [&](float* out, CellRow cells, int32_t r, int64_t c, int64_t n) {
    ActiveRestoreKernels().measureDot(out, cells, field.Row(r, c), n);
  });
}

void WeighAxes(matrix& across, matrix& down, const matrix& x, const Weighting& weighting, StandingTeam& team,
               Range rows) {
  const auto weigh = [&](matrix& w, int64_t right, int32_t below) {
    ForEachRow(w, rows, team, [&](int32_t r) {
      ActiveRestoreKernels().measureDifference(w.z[r], x.z[r + below] + right, x.z[r], w.m);
      ApplyRule(w.z[r], w.m, weighting, false);
    });
  };
  across.dim(x.m - 1, x.n);
  weigh(across, 1, 0);
  down.dim(x.m, x.n - 1);
  weigh(down, 0, 1);
}

// ------------------------------------------------------------------------------------------------ listed pixels

// Counted, then listed.
PixelList::PixelList(const BitMask& mask, int32_t rows, StandingTeam& team) : begin(static_cast<size_t>(rows) + 1, 0) {
  const int32_t marked = mask.Empty() ? 0 : std::min(rows, mask.height);
  const auto forPixels = [&](const auto& visit) {
    ForRows(team, mask.width, marked, [&](int64_t first, int64_t end) {
      for (int32_t r = static_cast<int32_t>(first); r < end; ++r)
        for (int32_t c = 0; c < mask.width; ++c)
          if (mask.Get(r, c)) visit(r, c);
    });
  };
  forPixels([&](int32_t r, int32_t) { ++begin[r + 1]; });
  std::partial_sum(begin.begin(), begin.end(), begin.begin());
  column.resize(static_cast<size_t>(begin[rows]));
  std::vector<int64_t> next(begin.begin(), begin.end() - 1);
  forPixels([&](int32_t r, int32_t c) { column[next[r]++] = c; });
}

CellDifferences CellAt(const PlaneRows& x, int32_t r, int32_t c) {
  const float *upper = x[r], *lower = x[MirrorIndex(int64_t{r} + 1, x.n)];
  const int64_t right = MirrorIndex(int64_t{c} + 1, x.m);
  return {lower[right] - upper[c], lower[c] - upper[right]};
}

void WeighListed(std::vector<float>& w, const matrix& x, const OrientationField& field, const PixelList& pixels,
                 const Weighting& weighting, StandingTeam& team, Range rows) {
  w.resize(pixels.column.size());
  ForEachRow(x, rows, team, [&](int32_t r) {
    const int64_t begin = pixels.begin[r], end = pixels.begin[r + 1];
    for (int64_t k = begin; k < end; ++k) {
      const int32_t c = pixels.column[k];
      const auto [d1, d2] = CellAt(x, r, c);
      w[k] = d1 * field.u2.z[r][c] - d2 * field.u1.z[r][c];
    }
    ApplyRule(w.data() + begin, end - begin, weighting, false);
  });
}

}  // namespace norv
