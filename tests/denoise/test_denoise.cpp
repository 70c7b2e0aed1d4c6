// Both denoisers as a whole.
#include "denoise/component_filter.h"
#include "denoise/components.h"
#include "denoise/denoise.h"
#include "denoise/group_filter.h"
#include "denoise/working_planes.h"
#include "support/levels.h"
#include "support/nets.h"
#include "support/noisy_pictures.h"
#include "support/random_image.h"
#include "support/test.h"

namespace {

// Three different planes, noisy alike, as RGB.
FloatImage NoisyImage(int32_t width, int32_t height, double sigma) {
  FloatImage image(width, height, kDefaultFormat);
  for (int k = 0; k < 3; ++k) {
    const matrix scene = Scene(width, height);
    for (int32_t i = 0; i < scene.mn; ++i) image.plane[k].x[i] = scene.x[i] * static_cast<float>(1 - 0.2 * k);
    AddNoise(image.plane[k], sigma, 7 + k);
  }
  return image;
}

FloatImage ByGroups(FloatImage image, const GroupRequest& request) {
  DenoiseByGroups(image, request);
  return image;
}

}  // namespace

TEST_CASE("components remove noise") {
  const matrix clean = Scene(150, 90);
  matrix noisy = clean, components;
  AddNoise(noisy, 20, 1);
  LearnComponents(noisy, 6, 1, components);
  double best = 0;
  for (const bool hard : {true, false}) {
    CAPTURE(hard);
    matrix one = noisy, few = noisy;
    FilterByComponents(one, 20, components, {6, 0, hard, 1});
    FilterByComponents(few, 20, components, {6, 12, hard, 1});
    CHECK(PeakRatio(one, clean) > PeakRatio(noisy, clean) + 10);
    CHECK(PeakRatio(few, clean) > PeakRatio(noisy, clean) + 9);
    CHECK(PeakRatio(one, clean) > best + 0.1);  // the second pass gains
    best = PeakRatio(one, clean);
    CHECK_FALSE(SameBits(one, few));
  }
  // Without noise nothing goes; with one component a patch keeps one shape only.
  matrix kept = noisy;
  FilterByComponents(kept, 1e-6, components, {6, 0, false, 2});
  CHECK(Apart(kept, noisy) < 1e-3);
}

TEST_CASE("planes as small as a patch and rows that end anywhere") {
  for (const auto& [w, h] : {std::pair{5, 5}, {5, 40}, {40, 5}, {21, 22}}) {
    matrix plane = Scene(w, h), components;
    AddNoise(plane, 10, 5);
    LearnComponents(plane, 5, 2, components);
    FilterByComponents(plane, 10, components, {5, 0, false, 2});
    matrix grouped = plane;
    FilterGroups({{&grouped, 10}}, {2, 5, 2.83, 0.1, true, false, 2});
    if (w + h > 10) CHECK_FALSE(SameBits(grouped, plane));
    for (const matrix* result : {&plane, &grouped})
      CHECK(std::all_of(result->x, result->x + result->mn, [](float v) { return v > 0 && v < 255; }));
  }
}

TEST_CASE("the left edge is treated as the right one") {
  const auto mirrored = [](const matrix& a, int32_t run) {
    matrix m = a;
    for (int32_t i = 0; i < a.mn; ++i) m.x[i] = a.x[i / run * run + run - 1 - i % run];
    return m;
  };
  matrix plane = Scene(21, 22), components;
  AddNoise(plane, 20, 2);
  LearnComponents(plane, 5, 1, components);
  matrix other = mirrored(plane, 21);
  FilterByComponents(other, 20, mirrored(components, 5), {5, 0, true, 1});
  FilterByComponents(plane, 20, components, {5, 0, true, 1});
  const matrix back = mirrored(other, 21);
  for (int32_t i = 0; i < plane.mn; ++i) CHECK(back.x[i] == doctest::Approx(plane.x[i]).epsilon(1e-5));
}

TEST_CASE("both denoisers give the same bits by one thread and by teams, larger than there are rows too") {
  for (const auto& [w, h] : {std::pair{5, 5}, {40, 6}, {6, 40}, {37, 61}})
    for (const bool luminance : {false, true}) {
      const FloatImage noisy = NoisyImage(w, h, 20);
      const auto byComponents = [&](int32_t threads) {
        FloatImage image = noisy;
        DenoiseByComponents(image,
                            {.side = 5, .luminance = luminance, .threads = threads, .source = ComponentSource::own});
        return ImageBytes(image);
      };
      const auto byGroups = [&](int32_t threads) {
        return ImageBytes(ByGroups(noisy, {.iterations = 2, .side = 5, .threads = threads, .luminance = luminance}));
      };
      for (const int32_t threads : {2, 3, 16}) {
        INFO(noisy.width, " x ", noisy.height, ", threads ", threads);
        CHECK(byComponents(threads) == byComponents(1));
        CHECK(byGroups(threads) == byGroups(1));
      }
    }
}

TEST_CASE("groups remove noise") {
  GroupRequest request{.iterations = 3, .sigma = 20, .luminance = false};
  const FloatImage noisy = NoisyImage(90, 64, 20);
  const matrix clean = Scene(90, 64);
  const double before = PeakRatio(noisy.plane[0], clean);
  const FloatImage serial = ByGroups(noisy, request);
  CHECK(PeakRatio(serial.plane[0], clean) > before + 10);
  for (bool GroupRequest::*flag : {&GroupRequest::ranked, &GroupRequest::luminance}) {
    GroupRequest changed = request;
    changed.*flag = true;
    const FloatImage result = ByGroups(noisy, changed);
    CHECK(PeakRatio(result.plane[0], clean) > before + 9);
    CHECK(ImageBytes(result) != ImageBytes(serial));
  }
  request.twoStep = false;
  CHECK(PeakRatio(ByGroups(noisy, request).plane[0], clean) > before + 10);
  request.sigma = 0;  // estimated
  CHECK(PeakRatio(ByGroups(noisy, request).plane[0], clean) > before + 9);
}

TEST_CASE("both denoisers have the same bits at every vector level") {
  GroupRequest groups{.iterations = 2};
  ComponentRequest components{.source = ComponentSource::own};
  for (const auto& [w, h, side] : {std::array{37, 23, 3}, {40, 41, 6}}) {
    const FloatImage noisy = NoisyImage(w, h, 20);
    components.side = groups.side = side;
    std::vector<FloatImage> first;
    for (const VectorLevel level : AvailableLevels()) {
      const ForcedLevel forced(level);
      std::vector<FloatImage> made = {noisy, noisy, noisy};
      DenoiseByGroups(made[0], groups);
      for (int k = 1; k < 3; ++k) {
        components.hard = k == 1;
        DenoiseByComponents(made[k], components);
      }
      if (first.empty()) first = made;
      for (size_t k = 0; k < made.size(); ++k) CHECK(ImageBytes(made[k]) == ImageBytes(first[k]));
    }
  }
}

TEST_CASE("what asks for nothing, or is too small, stays as it is in every format") {
  for (const int32_t format : {kDefaultFormat, int32_t{kLuminance}, int32_t{kWithFourth}}) {
    FloatImage image = NoisyImage(7, 20, 10);
    image.ConvertTo(format);
    const FloatImage original = image;
    DenoiseByGroups(image, {.iterations = 0});
    for (const int32_t side : {0, 8}) DenoiseByGroups(image, {.side = side});
    for (const int32_t side : {-3, 8}) DenoiseByComponents(image, {.side = side});
    CHECK(ImageBytes(image) == ImageBytes(original));
  }
  FloatImage empty;
  DenoiseByGroups(empty, {});
  CHECK(empty.count == 0);
}

TEST_CASE("a fourth plane passes through, and the format stays") {
  FloatImage image = NoisyImage(40, 30, 20);
  image.ConvertTo(kWithFourth | 7);
  for (int32_t i = 0; i < image.count; ++i) image.plane[3].x[i] = static_cast<float>(i % 251);
  const FloatImage original = image;
  DenoiseByGroups(image, {.iterations = 1});
  CHECK(image.format == original.format);
  CHECK(SameBits(image.plane[3], original.plane[3]));
  CHECK_FALSE(SameBits(image.plane[1], original.plane[1]));
}

TEST_CASE("noise in grey levels becomes each working plane's own") {
  FloatImage image = NoisyImage(8, 8, 20);
  for (const bool luminance : {false, true}) {
    WorkingPlanes planes(image, luminance, 3);
    const auto noisy = planes.Planes(20);
    REQUIRE(noisy.size() == 3);
    CHECK(noisy[0].sigma == doctest::Approx(luminance ? 20 * std::hypot(0.299, 0.587, 0.114) : 20).epsilon(1e-5));
    CHECK(noisy[2].sigma == doctest::Approx(luminance ? 20 * std::hypot(0.5, 0.4187, 0.0813) : 20).epsilon(1e-5));
    planes.Finish();
  }
}

TEST_CASE("values out of range and damaged pixels") {
  const FloatImage noisy = NoisyImage(30, 30, 20);
  const GroupRequest wild{.iterations = 1, .side = 99, .sigma = 1e9f, .strength = 1, .feedback = -4},
      tame{.iterations = 1, .side = 12, .sigma = 255, .strength = 1, .feedback = 0};
  CHECK(ImageBytes(ByGroups(noisy, wild)) == ImageBytes(ByGroups(noisy, tame)));

  FloatImage damaged = noisy;
  damaged.plane[0].z[4][5] = std::nanf("");
  damaged.plane[1].z[0][0] = HUGE_VALF;
  damaged.plane[2].z[29][29] = -3e38f;
  const FloatImage result = ByGroups(damaged, tame);
  for (int k = 0; k < 3; ++k)
    CHECK(std::all_of(result.plane[k].x, result.plane[k].x + result.count, [](float v) { return std::abs(v) < 400; }));
}
