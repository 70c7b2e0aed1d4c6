#include "kit/scale/resize.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <utility>

#include "kit/failure.h"
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

// What is done to planes: their rows along their length, then columns. Results are dimensioned there.
struct TwoPasses {
  std::function<void(const matrix& rows, matrix& made)> alongRows;
  std::function<AxisPart(AxisPart made)> needs;  // which rows of the first pass rows of the second are made of
  std::function<void(const matrix& held, int32_t heldFrom, matrix& made, AxisPart which)> alongColumns;
};

// Along rows first, in strips of their own, so that no row is worked on twice.
PictureSource InTwoPasses(PictureSource picture, const PictureSize& size, bool multiplied, TwoPasses work,
                          int32_t threads) {
  const auto passes = std::make_shared<const TwoPasses>(std::move(work));
  PictureShape shape = picture.shape;
  const auto alongRows = [passes, multiplied](Picture rows) {
    if (multiplied) Premultiply(rows);
    Picture made = EmptyLike(rows);
    for (int32_t k = 0; k < rows.channels; ++k) passes->alongRows(rows.plane[k], made.plane[k]);
    return made;
  };
  shape.width = size.width;
  PictureSource wide = ChangedRows(std::move(picture), shape, alongRows, threads);
  const auto needs = [passes](RowRange made) {
    const AxisPart part = passes->needs({made.first, made.rows});
    return RowRange{part.first, part.count};
  };
  const auto alongColumns = [passes, multiplied](const Picture& held, RowRange which, RowRange made) {
    Picture rows = EmptyLike(held);
    for (int32_t k = 0; k < held.channels; ++k)
      passes->alongColumns(held.plane[k], which.first, rows.plane[k], {made.first, made.rows});
    if (multiplied) Unpremultiply(rows);
    return rows;
  };
  shape.height = size.height;
  return InStrips(std::move(wide), shape, {needs, alongColumns}, threads);
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

PictureSource Resampled(PictureSource picture, ResampleTable horizontal, ResampleTable vertical, bool multiplied,
                        int32_t threads) {
  const auto across = std::make_shared<const ResampleTable>(std::move(horizontal));
  const auto down = std::make_shared<const ResampleTable>(std::move(vertical));
  const int32_t height = picture.shape.height;
  return InTwoPasses(std::move(picture), {across->Length(), down->Length()}, multiplied,
                     {[across](const matrix& rows, matrix& made) { ResampleAlongRows(rows, made, *across); },
                      [down, height](AxisPart made) { return SourceOf(*down, height, made); },
                      [down, height](const matrix& held, int32_t heldFrom, matrix& made, AxisPart which) {
                        ResampleAlongColumns({held, heldFrom, height}, made, *down, which.first, which.count);
                      }},
                     threads);
}

PictureSource Shrunk(PictureSource picture, int32_t factor, int32_t shrinkOrder, int32_t threads) {
  const PictureSize size = {picture.shape.width / factor, picture.shape.height / factor};
  if (size.width == 0 || size.height == 0) Fail("the picture is smaller than the factor");
  const auto taps = std::make_shared<matrix>();
  ShrinkKernel(*taps, factor, shrinkOrder);
  if (taps->mn == 0) Fail("there is no filter of order %d", shrinkOrder);
  const int32_t height = size.height * factor;
  return InTwoPasses(std::move(picture), size, true,
                     {[taps, factor, size](const matrix& rows, matrix& made) {
                        made.dim(size.width, rows.n);
                        ShrinkAlongRows(made, rows, factor, *taps);
                      },
                      [taps, factor, height](AxisPart made) { return ShrinkSource(factor, *taps, height, made); },
                      [taps, factor, height, size](const matrix& held, int32_t heldFrom, matrix& made, AxisPart which) {
                        made.dim(size.width, which.count);
                        ShrinkAlongColumns(made, {held, heldFrom, height}, factor, *taps, which.first);
                      }},
                     threads);
}

}  // namespace norv
