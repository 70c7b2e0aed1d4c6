#include <cmath>

#include "raster/right_inverse.h"
#include "support/test.h"

namespace {

using Dense = std::vector<std::vector<double>>;

Dense DenseOf(const ResampleTable& table, int32_t length) {
  Dense rows(table.start.size(), std::vector<double>(static_cast<size_t>(length)));
  for (size_t k = 0; k < rows.size(); ++k)
    for (int32_t i = 0; i < table.taps; ++i)
      rows[k][static_cast<size_t>(table.start[k] + i)] += table.weights[k * static_cast<size_t>(table.taps) + i];
  return rows;
}

// A reduction by triangles of any ratio; at the ends they are cut off.
ResampleTable Triangles(int32_t from, int32_t to) {
  ResampleTable table;
  const double step = static_cast<double>(from) / to;
  table.taps = std::min(2 * static_cast<int32_t>(std::ceil(step)) + 1, from);
  for (int32_t k = 0; k < to; ++k) {
    const double middle = (k + 0.5) * step - 0.5;
    const int32_t start = std::clamp(static_cast<int32_t>(std::round(middle)) - table.taps / 2, 0, from - table.taps);
    table.start.push_back(start);
    for (int32_t i = 0; i < table.taps; ++i)
      table.weights.push_back(static_cast<float>(std::max(0.0, 1 - std::abs(start + i - middle) / step) / step));
  }
  return table;
}

}  // namespace

TEST_CASE("the right inverse is R^T (R R^T + d)^-1: checked by multiplying, on axes short and long") {
  for (const auto& [from, to] : {std::pair{90, 60}, {61, 60}, {100, 41}, {120, 24}, {7, 5}, {2, 1}, {1, 1}})
    for (const double damping : {0.3, 0.01}) {
      const std::tuple asked = {from, to, damping};
      CAPTURE(std::get<0>(asked));
      CAPTURE(std::get<1>(asked));
      CAPTURE(std::get<2>(asked));
      const ResampleTable reduction = Triangles(from, to);
      const ResampleTable inverse = RightInverse(reduction, from, damping, 40);
      REQUIRE(inverse.Length() == from);
      const Dense r = DenseOf(reduction, from), p = DenseOf(inverse, to);
      double share = 0;
      for (const std::vector<double>& row : r)
        for (const double weight : row) share += damping / to * weight * weight;
      double worst = 0;  // of P (R R^T + d) = R^T
      for (int32_t k = 0; k < from; ++k) {
        std::vector<double> back(static_cast<size_t>(from));  // row k of P R
        for (int32_t j = 0; j < to; ++j)
          for (int32_t i = 0; i < from; ++i) back[i] += p[k][j] * r[j][i];
        for (int32_t l = 0; l < to; ++l) {
          double sum = share * p[k][l];
          for (int32_t i = 0; i < from; ++i) sum += back[i] * r[l][i];
          worst = std::max(worst, std::abs(sum - r[l][k]));
        }
      }
      CHECK(worst < 1e-5);
    }
}
