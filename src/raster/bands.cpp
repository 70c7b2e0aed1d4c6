#include "raster/bands.h"

#include <algorithm>
#include <utility>

#include "raster/edges.h"

namespace norv {

BandPlan PlanBands(int32_t rows, int32_t bands) {
  const int32_t whole = rows / bands;
  if (whole < bands) return {1, rows};
  const int32_t covering = whole + (rows % bands != 0);
  return {bands, std::min(covering, rows)};
}

void CutBand(const FloatImage& source, int32_t firstRow, int32_t rows, FloatImage& band) {
  band.Redim(source.width, rows, source.format);
  for (int32_t p = 0; p < band.planes; ++p)
    for (int32_t r = 0; r < band.plane[p].n; ++r) {
      const float* from = source.plane[p].z[MirrorIndex(int64_t{firstRow} + r, source.height)];
      std::copy_n(from, source.width, band.plane[p].z[r]);
    }
}

void PasteBand(FloatImage& destination, int32_t row, const FloatImage& band, int32_t margin) {
  const int32_t planes = std::min(destination.planes, band.planes);
  for (int32_t p = 0; p < planes; ++p) {
    const matrix& from = band.plane[p];
    matrix& to = destination.plane[p];
    const int64_t rows = std::min(int64_t{from.n} - 2 * int64_t{margin}, int64_t{to.n} - row);
    for (int64_t r = 0; r < rows; ++r) std::copy_n(from.z[margin + r], std::min(from.m, to.m), to.z[row + r]);
  }
}

Strip PlanStrip(int32_t height, int32_t first, int32_t rows, int32_t margin) {
  rows = std::min(rows, height - first);
  const int32_t top = std::min(first, margin), below = std::min(height - first - rows, margin);
  return {first, rows, first - top, top + rows + below, height};
}

const FloatImage& RowWindow::Show(const Strip& strip) {
  const int64_t width = source_.shape.width;
  FloatImage next(source_.shape.width, strip.windowRows, source_.shape.format);
  const int32_t kept = first_ + rows_ - strip.windowFirst;
  for (int32_t p = 0; p < next.planes; ++p)
    std::copy_n(window_.plane[p].x + window_.plane[p].mn - kept * width, kept * width, next.plane[p].x);
  source_.read(next, kept, strip.windowRows - kept);
  window_ = std::move(next);
  first_ = strip.windowFirst;
  rows_ = strip.windowRows;
  return window_;
}

}  // namespace norv
