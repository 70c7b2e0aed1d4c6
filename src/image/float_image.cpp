#include "image/float_image.h"

#include <algorithm>
#include <utility>

#include "image/float_image_file.h"
#include "platform/paths.h"

namespace norv {
namespace {

// The first `count` pixels (fewer where a plane has fewer), run by run by way of display RGB.
void ConvertPlanes(std::array<matrix, 4>& plane, const ColourModel& from, const ColourModel& to, int32_t count,
                   StandingTeam& team) {
  constexpr int32_t kRun = 256, kRunsWorthACut = 32;
  for (int32_t k = 0; k < std::max(from.planes, to.planes); ++k) count = std::min(count, plane[k].mn);
  team.ForParts((int64_t{count} + kRun - 1) / kRun, kRunsWorthACut, [&](int64_t begin, int64_t end) {
    float rgb[3][kRun];
    float* const display[] = {rgb[0], rgb[1], rgb[2]};
    for (int64_t i = begin * kRun; i < std::min<int64_t>(end * kRun, count); i += kRun) {
      float* at[4] = {};
      for (int32_t k = 0; k < std::max(from.planes, to.planes); ++k) at[k] = plane[k].x + i;
      const int32_t n = static_cast<int32_t>(std::min<int64_t>(kRun, count - i));
      from.runFromModel(display, at, n);
      to.runToModel(at, display, n);
    }
  });
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

void FloatImage::ConvertTo(int32_t newFormat, StandingTeam& team) {
  if (ModelOf(newFormat) == ModelOf(format)) {
    format = newFormat;
    return;
  }
  const ColourModel *from = FindModel(format), *to = FindModel(newFormat);
  if (!from || !to) return Redim(width, height, newFormat);
  for (int32_t k = from->planes; k < to->planes; ++k) plane[k].dim(plane[0].m, plane[0].n);
  ConvertPlanes(plane, *from, *to, count, team);
  for (int32_t k = to->planes; k < from->planes; ++k) plane[k].freemem();
  SelectModel(newFormat);
}

void FloatImage::RefreshSize() {
  width = plane[0].m;
  height = plane[0].n;
  count = plane[0].mn;
}

bool FloatImage::Load(const std::string& name, Folder folder) {
  FloatImageReader file(PathOf(name, folder));
  if (!file.IsOpen()) return true;
  Take(file);
  return false;
}

void FloatImage::Take(FloatImageReader& file) {
  Redim(file.width, file.height, file.format);
  for (int32_t k = 0; k < planes; ++k) plane[k].dim(width, height);
  mask.Clear();
  if (file.MaskWords() != 0) mask.Resize(width, height);
  file.Read(*this, 0, height);
  file.ReadMask(mask.words.data(), static_cast<int64_t>(mask.words.size()));
  file.WarnIfShort();
}

bool FloatImage::Save(const std::string& name, Folder folder) const {
  const auto words = static_cast<int64_t>(mask.words.size());
  FloatImageWriter file(PathOf(name, folder), width, height, format, words);
  file.WriteRows(*this);
  file.WriteMask(mask.words.data(), words);
  return !file.Commit();
}

}  // namespace norv
