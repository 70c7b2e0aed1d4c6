#include "kit/scale/resize.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "kit/pictures/picture.h"
#include "kit/pictures/strips.h"
#include "kit/scale/interpolation.h"
#include "kit/scale/premultiplied.h"
#include "raster/edges.h"
#include "raster/filters.h"

namespace norv {
namespace {

// x in pixels of the shorter axis.
struct FilterShape {
  double reach;
  double (*value)(double x);
};

FilterShape ShapeOf(ResizeFilter filter) {
  if (filter == ResizeFilter::cubic) return {2, CubicKernel};
  return {3, [](double x) { return LanczosKernel(x, 3); }};
}

ResampleTable NearestTable(int32_t from, int32_t to) {
  ResampleTable table{1, {}, std::vector<float>(static_cast<size_t>(to), 1.0f)};
  for (int64_t k = 0; k < to; ++k) table.start.push_back(static_cast<int32_t>((2 * k + 1) * from / (2 * int64_t{to})));
  return table;
}

ResampleTable PartOf(const ResampleTable& table, RowRange rows) {
  const auto start = table.start.begin() + rows.first;
  const auto weights = table.weights.begin() + int64_t{rows.first} * table.taps;
  return {table.taps, {start, start + rows.rows}, {weights, weights + int64_t{rows.rows} * table.taps}};
}

}  // namespace

ResampleTable ResizeTable(int32_t from, int32_t to, ResizeFilter filter) {
  if (filter == ResizeFilter::nearest) return NearestTable(from, to);
  const FilterShape shape = ShapeOf(filter);
  const double step = static_cast<double>(from) / to, stretch = std::max(step, 1.0), reach = shape.reach * stretch;
  const int64_t reached = 2 * static_cast<int64_t>(std::ceil(reach)) + 2;
  ResampleTable table;
  table.taps = static_cast<int32_t>(std::min<int64_t>(reached, from));
  for (int32_t k = 0; k < to; ++k) {
    const double position = (k + 0.5) * step - 0.5;
    const int64_t first = static_cast<int64_t>(std::floor(position)) - (reached / 2 - 1);
    const int64_t start = std::clamp<int64_t>(first, 0, from - table.taps);
    std::vector<double> weights(static_cast<size_t>(table.taps));
    double sum = 0;
    for (int64_t i = first; i < first + reached; ++i) {
      const double weight = shape.value((static_cast<double>(i) - position) / stretch);
      weights[static_cast<size_t>(MirrorIndex(i, from) - start)] += weight;
      sum += weight;
    }
    table.start.push_back(static_cast<int32_t>(start));
    for (const double weight : weights) table.weights.push_back(static_cast<float>(weight / sum));
  }
  return table;
}

PictureSource Resized(PictureSource picture, const PictureSize& size, ResizeFilter filter, int32_t threads) {
  PictureShape shape = picture.shape;
  const int32_t height = shape.height;
  const auto across = std::make_shared<const ResampleTable>(ResizeTable(shape.width, size.width, filter));
  const auto down = std::make_shared<const ResampleTable>(ResizeTable(height, size.height, filter));
  shape.width = size.width;
  shape.height = size.height;
  const auto needs = [down](RowRange made) {
    const int32_t first = down->start[made.first], last = down->start[made.End() - 1];
    return RowRange{first, last + down->taps - first};
  };
  const auto make = [across, down, height](Picture held, RowRange which, RowRange made) {
    const ResampleTable part = PartOf(*down, made);
    Picture rows;
    rows.channels = held.channels;
    rows.bits = held.bits;
    Premultiply(held);
    for (int32_t k = 0; k < held.channels; ++k)
      ResampleSeparable({held.plane[k], which.first, height}, rows.plane[k], *across, part);
    Unpremultiply(rows);
    return rows;
  };
  return InStrips(std::move(picture), shape, {needs, make}, threads);
}

}  // namespace norv
