#include "restore/terms/reference_plane.h"

#include <vector>

#include "raster/separable.h"

namespace norv {
namespace {

// Elements of an axis, `stride` apart, from `first` on.
struct Line {
  const double* elements;
  int64_t stride, first;
};

// Position k of an axis of n elements: the taps inside count, over the sum of their weights when some with a weight are
// outside.
double Resample(const ResampleTable& table, int32_t k, const Line& line, int64_t n) {
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
    sum += weight * line.elements[(i - line.first) * line.stride];
    inside += weight;
  }
  return cut && inside > 0 ? sum / inside : sum;
}

}  // namespace

matrix ReferencePlane(const matrix& observed, int32_t f, StandingTeam& team, Range rows) {
  const ResampleTable across = EnlargementTable(observed.m, f), down = EnlargementTable(observed.n, f);
  const int64_t w = across.Length(), h = observed.n;
  matrix reference(across.Length(), down.Length());
  const Range made = RowsWithin(rows, reference.n);
  const AxisPart from =
      SourceOf(down, observed.n, {static_cast<int32_t>(made.begin), static_cast<int32_t>(made.end - made.begin)});
  std::vector<double> wide(static_cast<size_t>(w * from.count));
  ForRows(team, across.Length(), from.count, [&](int64_t begin, int64_t end) {
    std::vector<double> row(static_cast<size_t>(observed.m));
    for (int64_t r = begin; r < end; ++r) {
      for (int32_t c = 0; c < observed.m; ++c) row[c] = static_cast<double>(observed.z[from.first + r][c]);
      for (int32_t k = 0; k < across.Length(); ++k)
        wide[r * w + k] = Resample(across, k, {row.data(), 1, 0}, observed.m);
    }
  });
  ForRows(team, reference.m, made.end - made.begin, [&](int64_t begin, int64_t end) {
    for (int64_t k = made.begin + begin; k < made.begin + end; ++k)
      for (int32_t c = 0; c < reference.m; ++c)
        reference.z[k][c] =
            static_cast<float>(-Resample(down, static_cast<int32_t>(k), {wide.data() + c, w, from.first}, h));
  });
  return reference;
}

}  // namespace norv
