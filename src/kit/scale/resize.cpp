#include "kit/scale/resize.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "kit/pictures/picture.h"
#include "kit/pictures/premultiplied.h"
#include "kit/scale/interpolation.h"
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

// The rows `first`, first + 1, ... of the whole axis.
ResampleTable PartOf(const ResampleTable& table, int32_t first, int32_t count) {
  const auto start = table.start.begin() + first;
  const auto weights = table.weights.begin() + int64_t{first} * table.taps;
  return {table.taps, {start, start + count}, {weights, weights + int64_t{count} * table.taps}};
}

// Rows of the source, of which those that are no longer needed go.
class Resizer {
 public:
  Resizer(const PictureSource& source, const PictureSize& size, ResizeFilter filter)
      : source_(Premultiplied(source)),
        horizontal_(ResizeTable(source_.shape.width, size.width, filter)),
        vertical_(ResizeTable(source_.shape.height, size.height, filter)) {}

  // In pieces, so that who asks for all rows does not make the window as large.
  void Read(Picture& rows, int32_t at, int32_t count) {
    constexpr int32_t kPiece = 256;
    for (int32_t done = 0; done < count; done += kPiece) ReadPiece(rows, at + done, std::min(kPiece, count - done));
  }

 private:
  void ReadPiece(Picture& rows, int32_t at, int32_t count) {
    const ResampleTable part = PartOf(vertical_, next_, count);
    Show(part.start.front(), part.start.back() + part.taps);
    Picture made;
    made.channels = rows.channels;
    made.bits = rows.bits;
    for (int32_t k = 0; k < rows.channels; ++k)
      ResampleSeparable({window_.plane[k], first_, source_.shape.height}, made.plane[k], horizontal_, part);
    Unpremultiply(made);
    for (int32_t k = 0; k < rows.channels; ++k)
      std::copy_n(made.plane[k].x, made.plane[k].mn, rows.plane[k].x + int64_t{at} * rows.Width());
    next_ += count;
  }

  // The source's rows begin .. end - 1 in the window; neither end ever moves up.
  void Show(int32_t begin, int32_t end) {
    const PictureShape& shape = source_.shape;
    const int32_t last = first_ + window_.Height(), kept = std::max(last - begin, 0);
    Picture window(shape.width, end - begin, shape.channels, shape.bits);
    for (int32_t k = 0; k < shape.channels; ++k)
      if (kept > 0) std::copy_n(window_.plane[k].z[begin - first_], int64_t{kept} * shape.width, window.plane[k].x);
    window_ = std::move(window);
    source_.read(window_, kept, end - begin - kept);
    first_ = begin;
  }

  PictureSource source_;
  ResampleTable horizontal_, vertical_;
  Picture window_;
  int32_t first_ = 0, next_ = 0;
};

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

PictureSource Resized(const PictureSource& picture, const PictureSize& size, ResizeFilter filter) {
  PictureShape shape = picture.shape;
  shape.width = size.width;
  shape.height = size.height;
  const auto resizer = std::make_shared<Resizer>(picture, size, filter);
  return {shape, [resizer](Picture& rows, int32_t at, int32_t count) { resizer->Read(rows, at, count); }};
}

}  // namespace norv
