#include "kit/training/training_pictures.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "kit/failure.h"
#include "kit/measure/quality.h"
#include "kit/pictures/luminance.h"
#include "kit/scale/interpolation.h"
#include "kit/scale/scale.h"
#include "kit/training/name_hash.h"
#include "kit/training/picture_folder.h"
#include "net/enlarge.h"
#include "platform/console.h"
#include "platform/team.h"
#include "train/training_pairs.h"

namespace norv {
namespace {

// Cubic convolution: keeps edges sharp, and what its overshoots leave the range by is cut.
constexpr int32_t kReduceOrder = -1;
constexpr int32_t kSmallestSide = 7;  // of a shrunk picture, for a single pair

void Clamp(matrix& plane) {
  for (int32_t i = 0; i < plane.mn; ++i) plane.x[i] = std::min(255.0f, std::max(0.0f, plane.x[i]));
}

void RoundToLevels(matrix& plane) {
  Clamp(plane);
  for (int32_t i = 0; i < plane.mn; ++i) plane.x[i] = std::floor(plane.x[i] + 0.5f);
}

// What a network for compressed pictures is measured at: both ends of the range and its middle.
std::vector<int32_t> ValidationQualities(const QualityRange& range) {
  if (range.low == range.high) return {range.high};
  return {range.low, (range.low + range.high) / 2, range.high};
}

double PsnrInside(const matrix& a, const matrix& b, int32_t border) {
  return Psnr(WithoutBorder(a, border), WithoutBorder(b, border));
}

// quality: that the shrunk picture is compressed by, 0 for not at all.
HeldOut MakeHeldOut(matrix plane, int32_t factor, int32_t shrinkOrder, int32_t quality) {
  HeldOut picture;
  CropToMultiple(plane, factor);
  picture.original = plane;
  picture.low = ShrinkPlane(std::move(plane), factor, shrinkOrder);
  RoundToLevels(picture.low);
  if (quality > 0) CompressLuminance(picture.low, quality);
  const auto psnr = [&](Interpolation interpolation) {
    return PsnrInside(picture.original, InterpolatePlane(picture.low, factor, interpolation), 2 * factor);
  };
  picture.cubic = psnr(Interpolation::cubic);
  picture.lanczos = psnr(Interpolation::lanczos);
  return picture;
}

}  // namespace

TrainingPictures::TrainingPictures(const PicturePlan& plan) : plan_(plan), names_(PicturesIn(plan.folder)) {
  const std::string& valid = plan.valid;
  if (valid.find_first_not_of("0123456789") != std::string::npos)
    HoldOutNamed();
  else
    HoldOutByHash(valid.empty() ? (names_.size() + 9) / 10 : std::strtoul(valid.c_str(), nullptr, 10));
  if (heldOut_.empty()) Fail("no picture of %s is left to be held out", plan.folder.c_str());
  if (names_.empty()) Fail("no picture of %s is left to train on", plan.folder.c_str());
}

matrix TrainingPictures::LoadOrWarn(const std::string& name) const {
  const std::string path = PathInFolder(plan_.folder, name);
  matrix plane;
  try {
    plane = LoadLuminance(path);
  } catch (const Failure& failure) {
    Warn("%s; the picture is left out", failure.what());
    return {};
  } catch (const char* message) {
    Warn("%s: %s; the picture is left out", path.c_str(), message);
    return {};
  } catch (const SaidFailure&) {
    return {};
  }
  const int32_t smallest = kSmallestSide * plan_.factor * plan_.reduce;
  if (std::min(plane.m, plane.n) < smallest) {
    Warn("%s is left out: %d x %d pixels, less than %d on a side", path.c_str(), plane.m, plane.n, smallest);
    return {};
  }
  if (plan_.reduce > 1) plane = ShrinkPlane(std::move(plane), plan_.reduce, kReduceOrder);
  Clamp(plane);
  return plane;
}

bool TrainingPictures::HoldOut(const std::string& name) {
  names_.erase(std::find(names_.begin(), names_.end(), name));
  matrix plane = LoadOrWarn(name);
  if (plane.mn == 0) return false;
  for (const int32_t quality : ValidationQualities(plan_.jpeg)) {
    HeldOut picture = MakeHeldOut(plane, plan_.factor, plan_.shrinkOrder, quality);
    if (std::isinf(picture.cubic) || std::isinf(picture.lanczos)) {
      Warn("%s is left out: nothing in it can be measured", name.c_str());
      return false;
    }
    heldOut_.push_back(std::move(picture));
  }
  return true;
}

void TrainingPictures::HoldOutNamed() {
  std::istringstream list(plan_.valid);
  for (std::string name; std::getline(list, name, ',');) {
    if (std::find(names_.begin(), names_.end(), name) == names_.end())
      Fail("there is no picture %s in %s", name.c_str(), plan_.folder.c_str());
    HoldOut(name);
  }
}

void TrainingPictures::HoldOutByHash(size_t count) {
  std::vector<std::string> byHash = names_;
  std::stable_sort(byHash.begin(), byHash.end(),
                   [](const std::string& a, const std::string& b) { return HashOf(a) < HashOf(b); });
  size_t held = 0;
  for (size_t i = 0; i < byHash.size() && held < count; ++i) held += HoldOut(byHash[i]);
}

void TrainingPictures::ForTraining(const std::function<void(matrix&, const Degradation&)>& use) const {
  bool any = false;
  for (const std::string& name : names_) {
    matrix plane = LoadOrWarn(name);
    if (plane.mn == 0) continue;
    any = true;
    Degradation degrade;
    if (!plan_.jpeg.Empty()) degrade = [&](matrix& small) { CompressInBands(small, plan_.jpeg, name); };
    use(plane, degrade);
  }
  if (!any) Fail("no picture of %s is left to train on", plan_.folder.c_str());
}

double ValidationPsnr(const NeuralNet& net, const std::vector<HeldOut>& pictures, int32_t threads) {
  std::vector<double> psnr(pictures.size());
  ParallelFor(threads, static_cast<int64_t>(pictures.size()), [&](int64_t i) {
    const HeldOut& picture = pictures[i];
    matrix large;
    NetEnlargeChannel(net, picture.low, large);
    psnr[i] = PsnrInside(picture.original, large, 2 * (picture.original.m / picture.low.m));
  });
  double sum = 0;
  for (const double value : psnr) sum += value;
  return sum / static_cast<double>(psnr.size());
}

}  // namespace norv
