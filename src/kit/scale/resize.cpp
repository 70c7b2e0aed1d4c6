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

// A picture for rows like these, its planes still empty.
Picture EmptyLike(const Picture& rows) {
  Picture picture;
  picture.channels = rows.channels;
  picture.bits = rows.bits;
  return picture;
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
  ResampleTable horizontal = ResizeTable(picture.shape.width, size.width, filter);
  ResampleTable vertical = ResizeTable(picture.shape.height, size.height, filter);
  return Resampled(std::move(picture), std::move(horizontal), std::move(vertical), filter != ResizeFilter::nearest,
                   threads);
}

// Along rows first, in strips of their own, so that no row is worked on twice.
PictureSource Resampled(PictureSource picture, ResampleTable horizontal, ResampleTable vertical, bool multiplied,
                        int32_t threads) {
  const auto across = std::make_shared<const ResampleTable>(std::move(horizontal));
  const auto down = std::make_shared<const ResampleTable>(std::move(vertical));
  PictureShape shape = picture.shape;
  const int32_t height = shape.height;
  const auto alongRows = [across, multiplied](Picture rows) {
    if (multiplied) Premultiply(rows);
    Picture made = EmptyLike(rows);
    for (int32_t k = 0; k < rows.channels; ++k) ResampleAlongRows(rows.plane[k], made.plane[k], *across);
    return made;
  };
  shape.width = across->Length();
  PictureSource wide = ChangedRows(std::move(picture), shape, alongRows, threads);
  const auto needs = [down, height](RowRange made) {
    const AxisPart part = SourceOf(*down, height, {made.first, made.rows});
    return RowRange{part.first, part.count};
  };
  const auto alongColumns = [down, height, multiplied](const Picture& held, RowRange which, RowRange made) {
    Picture rows = EmptyLike(held);
    for (int32_t k = 0; k < held.channels; ++k)
      ResampleAlongColumns({held.plane[k], which.first, height}, rows.plane[k], *down, made.first, made.rows);
    if (multiplied) Unpremultiply(rows);
    return rows;
  };
  shape.height = down->Length();
  return InStrips(std::move(wide), shape, {needs, alongColumns}, threads);
}

}  // namespace norv
