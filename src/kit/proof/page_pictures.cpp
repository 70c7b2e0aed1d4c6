#include "kit/proof/page_pictures.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "kit/formats/codec.h"
#include "kit/measure/difference_map.h"
#include "kit/measure/reduced_rows.h"
#include "kit/metadata/metadata.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/luminance.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/picture_samples.h"
#include "kit/proof/html_text.h"
#include "kit/scale/premultiplied.h"

namespace norv {
namespace {

// Pixels of a picture.
struct Area {
  int32_t left = 0, top = 0, width = 0, height = 0;
};

// Does something with each group of a picture's rows from the top.
template <typename See>
void ForRows(const PictureSource& source, const See& see) {
  constexpr int32_t kRows = 64;
  const PictureShape& shape = source.shape;
  for (int32_t first = 0, count; first < shape.height; first += count) {
    count = std::min(kRows, shape.height - first);
    Picture rows(shape.width, count, shape.channels, shape.bits);
    source.read(rows, 0, count);
    see(rows, first);
  }
}

// 8 bits, with the colour profile and nothing else; what was reduced as a JPEG, which takes a tenth of the room.
std::string UriOf(Picture picture, const PictureShape& shape, bool exact) {
  if (!exact && picture.HasAlpha()) LayOnWhite(picture);
  int64_t moved = 0;
  Samples samples = ToSamples(picture, 8, moved);
  if (shape.metadata && !shape.metadata->icc.empty()) {
    Metadata colours;
    colours.icc = shape.metadata->icc;
    samples.metadata = std::make_shared<const Metadata>(std::move(colours));
  }
  EncodingChoice choice;
  if (!exact) choice.quality = 88;
  return exact ? DataUri("image/png", kPng.Encode(samples, choice))
               : DataUri("image/jpeg", kJpeg.Encode(samples, choice));
}

PictureSize ShownSize(const PictureShape& shape) {
  const double ratio = std::min(1.0, kShownSide / static_cast<double>(std::max(shape.width, shape.height)));
  const auto side = [&](int32_t length) { return std::max(1, static_cast<int32_t>(std::lround(length * ratio))); };
  return {side(shape.width), side(shape.height)};
}

// All of a picture, and some areas of it, as its rows pass by.
class Gathered {
 public:
  Gathered(const PictureShape& shape, const std::vector<Area>& areas)
      : shape_(shape),
        size_(ShownSize(shape)),
        reduced_({shape.width, shape.height}, size_, {Filter::cubic, -0.5}),
        whole_(size_.width, size_.height, shape.channels, shape.bits),
        areas_(areas) {
    for (const Area& area : areas) parts_.emplace_back(area.width, area.height, shape.channels, shape.bits);
  }
  void Take(const Picture& rows, int32_t first) {
    for (size_t i = 0; i < areas_.size(); ++i) TakePart(rows, first, areas_[i], parts_[i]);
    Picture multiplied = rows;
    Premultiply(multiplied);
    const int32_t made = reduced_.Made();
    Picture part = reduced_.Take(multiplied);
    if (part.Height() == 0) return;
    Unpremultiply(part);
    CopyPart(part, 0, part.Height(), whole_, made);
  }
  bool IsReduced() const { return size_.width < shape_.width || size_.height < shape_.height; }
  int32_t ShownWidth() const { return size_.width; }
  std::string Whole() { return UriOf(std::move(whole_), shape_, !IsReduced()); }
  std::string Part(size_t i) { return UriOf(std::move(parts_[i]), shape_, true); }

 private:
  static void TakePart(const Picture& rows, int32_t first, const Area& area, Picture& part) {
    const int32_t from = std::max(first, area.top), end = std::min(first + rows.Height(), area.top + area.height);
    for (int32_t k = 0; k < rows.channels; ++k)
      for (int32_t r = from; r < end; ++r)
        std::copy_n(rows.plane[k].z[r - first] + area.left, area.width, part.plane[k].z[r - area.top]);
  }

  PictureShape shape_;
  PictureSize size_;
  ReducedRows reduced_;
  Picture whole_;
  std::vector<Area> areas_;
  std::vector<Picture> parts_;
};

// How much happens in each cell of a picture.
class Detail {
 public:
  Detail(const PictureShape& shape, int32_t side)
      : side_(side), sums_(std::max(shape.width / side, 1), std::max(shape.height / side, 1)) {
    sums_.fill(0);
  }
  void Take(const Picture& rows, int32_t first) {
    const matrix luminance = LuminanceOf(rows);
    for (int32_t r = 0; r < luminance.n; ++r)
      for (int32_t x = 1; x < luminance.m; ++x) {
        const double step = std::abs(double{luminance.z[r][x]} - luminance.z[r][x - 1]);
        float& cell = sums_.z[std::min((first + r) / side_, sums_.n - 1)][std::min(x / side_, sums_.m - 1)];
        if (std::isfinite(step)) cell += static_cast<float>(std::min(step, 40.0));  // edges and texture alike
      }
  }
  // The cells with the most, none beside another as long as there are others.
  std::vector<Area> Most(int32_t count) {
    std::vector<Area> areas;
    for (int32_t i = 0; i < count && i < sums_.mn; ++i) {
      const int32_t at = static_cast<int32_t>(std::max_element(sums_.x, sums_.x + sums_.mn) - sums_.x);
      const int32_t column = at % sums_.m, row = at / sums_.m;
      if (sums_.x[at] < 0) break;
      areas.push_back({column * side_, row * side_, side_, side_});
      for (int32_t r = std::max(row - 1, 0); r <= std::min(row + 1, sums_.n - 1); ++r)
        for (int32_t c = std::max(column - 1, 0); c <= std::min(column + 1, sums_.m - 1); ++c) sums_.z[r][c] = -1;
    }
    return areas;
  }

 private:
  int32_t side_;
  matrix sums_;
};

// The smallest area of `inner` pixels that covers this one of a picture `ratio` times as large.
int32_t CoverFirst(double first, double ratio) { return static_cast<int32_t>(std::floor(first / ratio)); }
int32_t CoverEnd(double end, double ratio, int32_t most) {
  return std::min(most, static_cast<int32_t>(std::ceil(end / ratio)));
}

Area Covering(const Area& of, const PictureShape& large, const PictureShape& small) {
  const double x = static_cast<double>(large.width) / small.width, y = static_cast<double>(large.height) / small.height;
  Area area{CoverFirst(of.left, x), CoverFirst(of.top, y)};
  area.width = std::max(CoverEnd(of.left + of.width, x, small.width) - area.left, 1);
  area.height = std::max(CoverEnd(of.top + of.height, y, small.height) - area.top, 1);
  return area;
}

std::vector<Area> Chosen(const std::string& output) {
  const PictureSource result = OpenImage(output);
  const PictureShape& shape = result.shape;
  if (std::max(shape.width, shape.height) <= kShownSide) return {};
  Detail detail(shape, std::min({kPartSide, shape.width, shape.height}));
  ForRows(result, [&](const Picture& rows, int32_t first) { detail.Take(rows, first); });
  return detail.Most(kShownParts);
}

}  // namespace

std::vector<ShownPair> ShownPairs(const std::string& input, const ReadChoice& read, const std::string& output) {
  ReadChoice again = read;
  again.page = read.Page();  // which was warned of
  const std::vector<Area> areas = Chosen(output);
  const PictureSource small = OpenImage(input, again), large = OpenImage(output);
  const PictureShape from = small.shape, to = large.shape;
  std::vector<Area> covering;
  for (const Area& area : areas) covering.push_back(Covering(area, to, from));
  Gathered before(from, covering), after(to, areas);
  ForRows(small, [&](const Picture& rows, int32_t first) { before.Take(rows, first); });
  ForRows(large, [&](const Picture& rows, int32_t first) { after.Take(rows, first); });
  std::vector<ShownPair> pairs = {{"whole", before.Whole(), after.Whole(), to.width, to.height, after.ShownWidth()}};
  const double x = static_cast<double>(to.width) / from.width, y = static_cast<double>(to.height) / from.height;
  for (size_t i = 0; i < areas.size(); ++i) {
    const Area &a = areas[i], &b = covering[i];
    pairs.push_back({"cutout " + std::to_string(i + 1), before.Part(i), after.Part(i), a.width, a.height, a.width,
                     (b.left * x - a.left) / a.width, (b.top * y - a.top) / a.height, b.width * x / a.width,
                     b.height * y / a.height});
  }
  return pairs;
}

std::string MapUri(const matrix& differences, float times) {
  matrix scaled(differences);
  for (int32_t i = 0; i < scaled.mn; ++i) scaled.x[i] *= times;
  return UriOf(DifferenceMap(scaled), {}, true);
}

}  // namespace norv
