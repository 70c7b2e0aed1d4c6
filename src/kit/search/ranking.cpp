#include "kit/search/ranking.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <functional>
#include <optional>
#include <utility>

#include "kit/failure.h"
#include "kit/measure/quality.h"
#include "kit/models/catalogue.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/luminance.h"
#include "kit/pictures/picture.h"
#include "kit/scale/enlarge_to_size.h"
#include "kit/scale/restore_presets.h"
#include "kit/scale/scale.h"
#include "kit/search/kept_way.h"
#include "kit/training/picture_folder.h"
#include "platform/clock.h"
#include "platform/console.h"
#include "platform/progress.h"
#include "platform/threads/crew.h"

namespace norv {
namespace {

constexpr int32_t kLeastSide = 64, kEdge = 4, kFilter = -1;

struct Sample {
  Picture small;
  matrix luminance;  // of the picture that it was made of
};

Picture Middle(const Picture& picture, int32_t width, int32_t height) {
  Picture middle(width, height, picture.channels, picture.bits);
  const int32_t x = (picture.Width() - width) / 2, y = (picture.Height() - height) / 2;
  for (int32_t k = 0; k < picture.channels; ++k)
    for (int32_t r = 0; r < height; ++r) std::copy_n(picture.plane[k].z[y + r] + x, width, middle.plane[k].z[r]);
  return middle;
}

Sample MakeSample(const std::string& path, const RankChoice& choice) {
  Picture picture = LoadImage(path);
  LayOnWhite(picture);
  const auto sideOf = [&](int32_t pixels) { return std::min(pixels, choice.side) / choice.factor * choice.factor; };
  const int32_t width = sideOf(picture.Width()), height = sideOf(picture.Height());
  if (std::min(width, height) < kLeastSide)
    Fail("%s: %d x %d pixels are too few to measure on: it takes %d x %d", path.c_str(), picture.Width(),
         picture.Height(), kLeastSide, kLeastSide);
  const Picture large = Middle(picture, width, height);
  Sample sample{ShrinkPicture(large, choice.factor, kFilter), LuminanceOf(large)};
  sample.small.bits = 8;
  for (int32_t k = 0; k < sample.small.channels; ++k)
    for (int32_t i = 0; i < sample.small.plane[k].mn; ++i)
      sample.small.plane[k].x[i] = std::clamp(std::round(sample.small.plane[k].x[i]), 0.0f, 255.0f);
  return sample;
}

std::vector<Sample> Samples(const std::string& folder, const RankChoice& choice, std::vector<std::string>& names) {
  const std::vector<std::string> all = PicturesIn(folder);
  const int64_t count = std::min<int64_t>(choice.pictures, static_cast<int64_t>(all.size()));
  std::vector<Sample> samples;
  for (int64_t i = 0; i < count; ++i) {
    const std::string& name = all[i * all.size() / count];
    try {
      samples.push_back(MakeSample(PathInFolder(folder, name), choice));
      names.push_back(name);
    } catch (const Failure& failure) {
      Warn("%s; it is left out", failure.what());
    }
  }
  if (samples.empty()) Fail("none of the pictures in %s can be measured on", folder.c_str());
  return samples;
}

std::vector<KeptWay> AllWays() {
  std::vector<KeptWay> ways;
  for (const char* filter : {"nearest", "cubic", "lanczos"}) ways.push_back({.method = filter});
  for (const std::string& preset : RestorePresetNames()) ways.push_back({.method = "restore", .preset = preset});
  for (const Model& model : FindModels()) {
    for (const bool quick : {true, false}) ways.push_back({.method = "net", .model = model.name, .quick = quick});
    for (const std::string& preset : RestorePresetNames())
      ways.push_back({.method = "both", .model = model.name, .preset = preset});
  }
  return ways;
}

// Samples first, first + 1, ... enlarged side by side, each by one thread; adds the processor's seconds.
std::vector<Picture> EnlargedSideBySide(const std::vector<Sample>& samples, size_t first, int32_t factor,
                                        RankedWay& ranked) {
  std::vector<Picture> large(std::min(static_cast<size_t>(UsualThreads()), samples.size() - first));
  std::atomic<size_t> next{0};
  const double start = ProcessorSeconds();
  SideBySide(static_cast<int32_t>(large.size()), [&] {
    for (size_t i; (i = next++) < large.size();) {
      const Picture& small = samples[first + i].small;
      const EnlargeWay way = WayOfKept(ranked.way, {small.Width() * factor, small.Height() * factor}, factor, 1);
      large[i] = AllRows(Enlarged(HeldPicture(small), way));
    }
  });
  ranked.seconds += ProcessorSeconds() - start;
  return large;
}

void Measure(const Sample& sample, Picture large, RankedWay& ranked) {
  for (int32_t k = 0; k < large.channels; ++k)
    for (int32_t i = 0; i < large.plane[k].mn; ++i)
      large.plane[k].x[i] = std::clamp(std::round(large.plane[k].x[i]), 0.0f, 255.0f);
  const matrix result = WithoutBorder(LuminanceOf(large), kEdge), wanted = WithoutBorder(sample.luminance, kEdge);
  ranked.decibels += Psnr(result, wanted);
  ranked.similarity += Ssim(result, wanted);
}

}  // namespace

Ranking RankWays(const std::string& folder, const RankChoice& choice) {
  Ranking ranking;
  const std::vector<Sample> samples = Samples(folder, choice, ranking.pictures);
  double megapixels = 0;
  for (const Sample& sample : samples) megapixels += 1e-6 * sample.small.Width() * sample.small.Height();
  const std::vector<KeptWay> ways = AllWays();
  Progress progress("Measuring", static_cast<int64_t>(ways.size() * samples.size()));
  for (const KeptWay& way : ways) {
    RankedWay ranked;
    ranked.way = way;
    for (size_t first = 0; first < samples.size();)
      for (Picture& large : EnlargedSideBySide(samples, first, choice.factor, ranked)) {
        Measure(samples[first++], std::move(large), ranked);
        progress.Advance();
      }
    const double count = static_cast<double>(samples.size());
    ranked.decibels /= count;
    ranked.similarity /= count;
    ranked.seconds /= megapixels;
    ranking.ways.push_back(std::move(ranked));
  }
  std::ranges::stable_sort(ranking.ways, std::greater(), &RankedWay::decibels);
  return ranking;
}

}  // namespace norv
