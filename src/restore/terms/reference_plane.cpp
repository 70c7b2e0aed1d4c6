#include "restore/terms/reference_plane.h"

#include <vector>

#include "raster/separable.h"
#include "restore/blocks/row_runs.h"

namespace norv {
namespace {

// Position k of an axis of n elements, `stride` apart: the taps inside count, over the sum of their weights when some
// with a weight are outside.
double Resample(const ResampleTable& table, int32_t k, const double* line, int64_t stride, int64_t n) {
  const float* weights = &table.weights[static_cast<size_t>(k) * static_cast<size_t>(table.taps)];
  double sum = 0, inside = 0;
  bool cut = false;
  for (int64_t j = 0; j < table.taps; ++j) {
    const int64_t i = table.start[k] + j;
    const double weight = static_cast<double>(weights[j]);
    if (weight == 0) continue;
    if (i < 0 || i >= n) {
      cut = true;
      continue;
    }
    sum += weight * line[i * stride];
    inside += weight;
  }
  return cut && inside > 0 ? sum / inside : sum;
}

}  // namespace

matrix ReferencePlane(const matrix& observed, int32_t f, StandingTeam& team) {
  const ResampleTable across = EnlargementTable(observed.m, f), down = EnlargementTable(observed.n, f);
  const int64_t w = across.Length(), h = observed.n;
  matrix reference(across.Length(), down.Length());
  std::vector<double> wide(static_cast<size_t>(w * h));
  ForRows(team, across.Length(), h, [&](int64_t begin, int64_t end) {
    std::vector<double> row(static_cast<size_t>(observed.m));
    for (int64_t r = begin; r < end; ++r) {
      for (int32_t c = 0; c < observed.m; ++c) row[c] = static_cast<double>(observed.z[r][c]);
      for (int32_t k = 0; k < across.Length(); ++k) wide[r * w + k] = Resample(across, k, row.data(), 1, observed.m);
    }
  });
  ForRows(team, reference.m, reference.n, [&](int64_t begin, int64_t end) {
    for (int64_t k = begin; k < end; ++k)
      for (int32_t c = 0; c < reference.m; ++c)
        reference.z[k][c] = static_cast<float>(-Resample(down, static_cast<int32_t>(k), wide.data() + c, w, h));
  });
  return reference;
}

}  // namespace norv
