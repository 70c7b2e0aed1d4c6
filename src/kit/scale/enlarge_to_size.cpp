#include "kit/scale/enlarge_to_size.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kit/failure.h"
#include "kit/measure/agreement.h"
#include "kit/pictures/file_kind.h"
#include "kit/scale/interpolation.h"
#include "kit/scale/refine.h"
#include "kit/scale/restore_presets.h"
#include "kit/scale/scale.h"
#include "net/net_file.h"

namespace norv {
namespace {

PictureSize SizeOf(const PictureShape& shape) { return {shape.width, shape.height}; }

// How many times larger where that is a whole number for both sides, else 0.
int32_t WholeFactor(const PictureShape& shape, const PictureSize& size) {
  const int32_t factor = size.width / shape.width;
  return PictureSize{shape.width * factor, shape.height * factor} == size ? factor : 0;
}

// Whole factors have tables of their own, whose bits are older than those of other sizes.
PictureSource ByWholeFactor(PictureSource picture, ResizeFilter filter, int32_t factor, int32_t threads) {
  const Interpolation way = filter == ResizeFilter::cubic ? Interpolation::cubic : Interpolation::lanczos;
  ResampleTable horizontal = InterpolationTable(way, picture.shape.width, factor);
  ResampleTable vertical = InterpolationTable(way, picture.shape.height, factor);
  return Resampled(std::move(picture), std::move(horizontal), std::move(vertical), true, threads);
}

// By restoration alone: from a Lanczos-3 enlargement or, no larger, from the picture as it is.
PictureSource Restored(PictureSource picture, const EnlargeWay& way) {
  const int32_t factor = ReachedFactor(way, picture.shape), threads = way.how.threads;
  std::shared_ptr<PassedLuminance> passed;
  picture = KeepingLuminance(std::move(picture), passed);
  if (factor > 1) picture = ByWholeFactor(std::move(picture), ResizeFilter::lanczos, factor, threads);
  RestoreParameters parameters =
      way.blur > 0 ? DeblurringPreset(way.preset, factor, way.blur) : RestorePreset(way.preset, factor);
  TurnKnobs(parameters, way.knobs);
  picture = RefinedRows(std::move(picture), passed, parameters, threads);
  if (SizeOf(picture.shape) == way.size) return picture;
  return Resized(std::move(picture), way.size, ResizeFilter::lanczos, threads);
}

PictureSource InSize(PictureSource picture, const EnlargeWay& way) {
  const int32_t threads = way.how.threads, factor = WholeFactor(picture.shape, way.size);
  if (!way.plan && !way.preset.empty()) return Restored(std::move(picture), way);
  if (!way.plan && factor > 0 && way.filter != ResizeFilter::nearest)
    return ByWholeFactor(std::move(picture), way.filter, factor, threads);
  if (!way.plan) return Resized(std::move(picture), way.size, way.filter, threads);
  const int32_t width = picture.shape.width;
  std::shared_ptr<PassedLuminance> passed;
  if (!way.preset.empty()) picture = KeepingLuminance(std::move(picture), passed);
  for (const Model& pass : way.plan->passes)
    picture = EnlargedByNet(std::move(picture), LoadNetwork(pass.path), way.how);
  if (passed) {
    RestoreParameters parameters = RefinementPreset(way.preset, picture.shape.width / width);
    TurnKnobs(parameters, way.knobs);
    picture = RefinedRows(std::move(picture), passed, parameters, threads);
  }
  if (SizeOf(picture.shape) == way.size) return picture;
  return Resized(std::move(picture), way.size, ResizeFilter::lanczos, threads);
}

}  // namespace

NeuralNet LoadNetwork(const std::string& path) {
  if (RecogniseWholeFile(path) != FileKind::net) Fail("%s is no network", path.c_str());
  NeuralNet net;
  LoadNet(net, path, Folder::asGiven);
  return net;
}

int32_t FactorOfNetwork(const std::string& path) {
  const NeuralNet net = LoadNetwork(path);
  RequireEnlargement(net);
  return net.LastNi() == 4 ? 2 : 4;
}

int32_t ReachedFactor(const EnlargeWay& way, const PictureShape& shape) {
  if (way.plan) {
    int32_t factor = 1;
    for (const Model& pass : way.plan->passes) factor *= pass.factor;
    return factor;
  }
  constexpr double kNearEnough = 1.02;  // where so little is missing, resampling adds it
  const double scale =
      std::max(static_cast<double>(way.size.width) / shape.width, static_cast<double>(way.size.height) / shape.height);
  return std::max(static_cast<int32_t>(std::ceil(scale / kNearEnough)), 1);
}

bool AgreesInTheEnd(const EnlargeWay& way, const PictureShape& shape) {
  constexpr int32_t kStaysNear = 4;  // times larger: a restored picture that is reduced from 4 to 3 is near enough
  const int32_t whole = WholeFactor(shape, way.size);
  return HoldsToPicture(way.preset) && !FirstSaid(way.knobs) && whole != ReachedFactor(way, shape) &&
         (whole == 0 || whole > kStaysNear);
}

PictureSource Enlarged(PictureSource picture, const EnlargeWay& way) {
  if (!AgreesInTheEnd(way, picture.shape)) return InSize(std::move(picture), way);
  const PictureSize small = SizeOf(picture.shape);
  std::shared_ptr<PassedLuminance> passed;
  picture = InSize(KeepingLuminance(std::move(picture), passed), way);
  return Agreeing(std::move(picture), passed, small, way.how.threads);
}

}  // namespace norv
