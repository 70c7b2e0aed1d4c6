#include "numeric/float_image.h"

#include <algorithm>
#include <utility>

#include "platform/console.h"
#include "platform/file.h"

namespace norv {
namespace {

// The first `count` elements of a plane, zeros where it has fewer.
void WritePlane(FileOut& file, const matrix& plane, int32_t count) {
  const int32_t held = std::min(count, plane.mn);
  file.Array(plane.x, static_cast<size_t>(held));
  for (int32_t i = held; i < count; ++i) file.Field(0.0f);
}

// Planes and mask of an image whose sizes have been settled.
template <typename File, typename Image>
void TransferPixels(File& file, Image& image) {
  for (int32_t k = 0; k < image.planes; ++k) {
    if constexpr (File::kReading) {
      image.plane[k].dim(image.width, image.height);
      file.Array(image.plane[k].x, static_cast<size_t>(image.plane[k].mn));
    } else {
      WritePlane(file, image.plane[k], image.count);
    }
  }
  file.Array(image.mask.words.data(), image.mask.words.size());
}

template <typename File, typename Image>
void Transfer(File& file, Image& image) {
  int32_t width = image.width, height = image.height, format = image.format;
  int32_t words = static_cast<int32_t>(image.mask.words.size());
  file.Field(width);
  file.Field(height);
  file.Field(format);
  file.Field(words);
  if constexpr (File::kReading) {
    image.Redim(width, height, format);
    image.mask.Clear();
    if (words != 0) image.mask.Resize(width, height);
  }
  TransferPixels(file, image);
}

// The first `count` pixels (fewer where a plane has fewer), run by run by way of display RGB.
void ConvertPlanes(std::array<matrix, 4>& plane, const ColourModel& from, const ColourModel& to, int32_t count) {
  constexpr int32_t kRun = 256;
  float rgb[3][kRun];
  float* const display[] = {rgb[0], rgb[1], rgb[2]};
  for (int32_t k = 0; k < std::max(from.planes, to.planes); ++k) count = std::min(count, plane[k].mn);
  for (int32_t i = 0; i < count; i += kRun) {
    float* at[4] = {};
    for (int32_t k = 0; k < std::max(from.planes, to.planes); ++k) at[k] = plane[k].x + i;
    const int32_t n = std::min(kRun, count - i);
    from.runFromModel(display, at, n);
    to.runToModel(at, display, n);
  }
}

}  // namespace

FloatImage::FloatImage() { SelectModel(kDefaultFormat); }

FloatImage::FloatImage(int32_t newWidth, int32_t newHeight, int32_t newFormat) : FloatImage() {
  Redim(newWidth, newHeight, newFormat);
}

void FloatImage::SelectModel(int32_t newFormat) {
  const ColourModel* model = FindModel(newFormat);
  format = newFormat;
  planes = model ? model->planes : 0;
  toModel = fromModel = toModel4 = fromModel4 = nullptr;
  if (!model) return;
  (planes == 3 ? toModel : toModel4) = model->toModel;
  (planes == 3 ? fromModel : fromModel4) = model->fromModel;
}

void FloatImage::Redim(int32_t newWidth, int32_t newHeight, int32_t newFormat) {
  if (newWidth == width && newHeight == height && ModelOf(newFormat) == ModelOf(format)) {
    format = newFormat;
    return;
  }
  *this = FloatImage();
  FloatImage made;  // nothing of it stays when memory runs out
  made.width = newWidth;
  made.height = newHeight;
  made.count = ElementCount(newWidth, newHeight);
  made.SelectModel(newFormat);
  for (int32_t k = 0; k < made.planes; ++k) {
    made.plane[k].dim(newWidth, newHeight);
    made.plane[k].fill(ModelOf(newFormat) == kWithFourth && k == 3 ? 255.0f : 0.0f);
  }
  *this = std::move(made);
}

void FloatImage::ConvertTo(int32_t newFormat) {
  if (ModelOf(newFormat) == ModelOf(format)) {
    format = newFormat;
    return;
  }
  const ColourModel *from = FindModel(format), *to = FindModel(newFormat);
  if (!from || !to) return Redim(width, height, newFormat);
  for (int32_t k = from->planes; k < to->planes; ++k) plane[k].dim(plane[0].m, plane[0].n);
  ConvertPlanes(plane, *from, *to, count);
  for (int32_t k = to->planes; k < from->planes; ++k) plane[k].freemem();
  SelectModel(newFormat);
}

void FloatImage::RefreshSize() {
  width = plane[0].m;
  height = plane[0].n;
  count = plane[0].mn;
}

bool FloatImage::Load(const std::string& name, Folder folder) {
  FileIn file(PathOf(name, folder));
  if (!file.IsOpen()) {
    Warn("cannot read %s: %s", file.Path().c_str(), file.Reason().c_str());
    return true;
  }
  Transfer(file, *this);
  file.WarnIfShort();
  if (planes == 0) Warn("%s has the unknown format %d", file.Path().c_str(), format);
  return false;
}

bool FloatImage::Save(const std::string& name, Folder folder) const {
  FileOut file(PathOf(name, folder));
  if (file.IsOpen()) Transfer(file, *this);
  return !file.Commit();
}

}  // namespace norv
