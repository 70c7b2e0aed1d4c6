// Modes 0 and 1 as the graphical program runs them.
#ifndef _WIN32

#include <algorithm>
#include <cmath>
#include <doctest/doctest.h>

#include "image/float_image.h"
#include "platform/team.h"
#include "support/messages.h"
#include "support/process.h"
#include "support/restoration.h"
#include "support/scratch.h"

using namespace norv;
using namespace norv::test;

namespace {

const RestoreParameters kUsual = TestParameters(5, 2, 1);

FloatImage Picture(int32_t w, int32_t h, int32_t format = kDefaultFormat) {
  FloatImage image(w, h, format);
  for (int32_t p = 0; p < image.planes; ++p)
    for (int32_t r = 0; r < h; ++r)
      for (int32_t c = 0; c < w; ++c)
        image.plane[p].z[r][c] = 128 + 60 * std::sin(0.2f * static_cast<float>(r * (p + 1) + c)) + (c > w / 2 ? 40 : 0);
  return image;
}

struct Finished {
  Outcome outcome;
  FloatImage image;
  bool written;
};

Finished Restore(const FloatImage& image, int mode, int threads = 1, const RestoreParameters& asked = kUsual,
                 const std::string& level = "") {
  const ScratchFolder folder;
  REQUIRE_FALSE(image.Save(folder / "input.fdib", Folder::asGiven));
  Finished finished;
  std::vector<std::string> environment{"NORV_DIR=" + folder.Path()};
  if (!level.empty()) environment.push_back("NORV_SIMD=" + level);
  finished.outcome = Run({.arguments = ModeWords(mode, asked, threads), .environment = environment});
  finished.written = std::filesystem::exists(folder / "output.fdib");
  if (finished.written) static_cast<void>(finished.image.Load(folder / "output.fdib", Folder::asGiven));
  return finished;
}

// Without `border` rows at the top and at the bottom.
double LargestDifference(const FloatImage& a, const FloatImage& b, int32_t border = 0) {
  double largest = 0;
  for (int32_t p = 0; p < a.planes; ++p)
    for (int32_t i = border * a.width; i < a.plane[p].mn - border * a.width; ++i)
      largest = std::max(largest, static_cast<double>(std::abs(a.plane[p].x[i] - b.plane[p].x[i])));
  return largest;
}

}  // namespace

TEST_CASE("modes 0 and 1 enlarge and say so; one band with margins is close to the whole") {
  const FloatImage picture = Picture(40, 60);
  const Finished whole = Restore(picture, 0), banded = Restore(picture, 1);
  CHECK(whole.outcome.exitCode == 0);
  CHECK(whole.outcome.errors == "");
  CHECK(IsReported(whole.outcome.output, "\nMode = 0"));
  CHECK(whole.image.width == 80);
  CHECK(whole.image.height == 120);
  CHECK(whole.image.format == kDefaultFormat);
  CHECK(IsReported(banded.outcome.output, "\nMode = 1\nNumber of threads = 1"));
  // Behind the margins the band's edge is that of the mirrored picture.
  CHECK(LargestDifference(whole.image, banded.image) > 0);
  CHECK(LargestDifference(whole.image, banded.image, 20) < 1);
}

TEST_CASE("two bands: the same bytes at every vector level, and seams that do not show") {
  const FloatImage picture = Picture(30, 70);
  const Finished two = Restore(picture, 1, 2);
  if (ProcessorCount() >= 2) CHECK(IsReported(two.outcome.output, "\nMode = 1\nNumber of threads = 2"));
  CHECK(LargestDifference(Restore(picture, 1).image, two.image) < 1);
  CHECK(LargestDifference(Restore(picture, 1, 2, kUsual, "avx").image, two.image) == 0);
}

TEST_CASE("thread counts: clamped with a message, or printed as given and worked as one") {
  const FloatImage picture = Picture(12, 10);
  const std::string processors = std::to_string(ProcessorCount());
  CHECK(IsReported(Restore(picture, 1, 1000).outcome.output,
                   "\nMode = 1\nNumber of threads changed from 1000 to " + processors +
                       " because it is the maximum for your CPU.\nNumber of threads = " + processors));
  const Finished none = Restore(picture, 1, -3);
  CHECK(IsReported(none.outcome.output, "\nMode = 1\nNumber of threads = -3"));
  CHECK(LargestDifference(none.image, Restore(picture, 1).image) == 0);
}

TEST_CASE("a request that cannot be met ends with a reason and a failure, and nothing is written") {
  struct {
    int32_t factor, kernelCode, format;
  } const requests[] = {{0, -1, kDefaultFormat},  {-4, -1, kDefaultFormat},         {2, 6, kDefaultFormat},
                        {2, -36, kDefaultFormat}, {2000000000, -1, kDefaultFormat}, {2, -1, 0x100}};
  for (const auto& [factor, kernelCode, format] : requests)
    for (int mode : {0, 1}) {
      RestoreParameters asked = kUsual;
      asked.factor = factor, asked.kernelCode = kernelCode;
      const Finished finished = Restore(FloatImage(8, 8, format), mode, 1, asked);
      CHECK(finished.outcome.exitCode == 1);
      CHECK(finished.outcome.errors.size() > 10);
      CHECK_FALSE(finished.written);
    }
}

TEST_CASE("a missing picture is restored as an empty one") {
  const ScratchFolder folder;
  for (int mode : {0, 1}) {
    const Outcome outcome =
        Run({.arguments = ModeWords(mode, kUsual, 1), .environment = {"NORV_DIR=" + folder.Path()}});
    CHECK(outcome.exitCode == 0);
    CHECK(outcome.errors.find("input.fdib") != std::string::npos);
    CHECK(ReadBytes(folder / "output.fdib").size() == 16);
  }
}

#endif
