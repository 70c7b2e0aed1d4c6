// Modes 0 and 1 as the graphical program runs them.
#include "image/float_image.h"
#include "platform/team.h"
#include "support/messages.h"
#include "support/process.h"
#include "support/random_plane.h"
#include "support/restoration.h"
#include "support/test.h"

namespace {

const RestoreParameters kUsual = TestParameters(5, 2, 1);

FloatImage Picture(int32_t w, int32_t h) {
  FloatImage image(w, h, kDefaultFormat);
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

// Of an empty image there is no file.
Finished Restore(const FloatImage& image, int mode, int threads = 1, const RestoreParameters& asked = kUsual,
                 const std::string& level = "") {
  const ScratchFolder folder;
  if (image.count > 0) REQUIRE_FALSE(image.Save(folder / "input.fdib", Folder::asGiven));
  Command command = NorvIn(folder, "");
  command.arguments = ModeWords(mode, asked, threads);
  if (!level.empty()) command.environment.push_back("NORV_SIMD=" + level);
  Finished finished{Run(command), {}, fs::exists(folder / "output.fdib")};
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
  CheckReported(whole.outcome, "\nMode = 0");
  CHECK((whole.image.width == 80 && whole.image.height == 120 && whole.image.format == kDefaultFormat));
  CheckReported(banded.outcome, "\nMode = 1\nNumber of threads = 1");
  // Behind the margins the band's edge is that of the mirrored picture.
  CHECK(LargestDifference(whole.image, banded.image) > 0);
  CHECK(LargestDifference(whole.image, banded.image, 20) < 1);
}

TEST_CASE(
    "bands: the same bytes at every vector level, seams that do not show, thread counts clamped or worked as one") {
  const FloatImage picture = Picture(30, 70);
  const int processors = ProcessorCount();
  const std::string most = std::to_string(processors);
  const Finished one = Restore(picture, 1, -3), two = Restore(picture, 1, 2);
  CheckReported(one.outcome, "\nMode = 1\nNumber of threads = -3");
  if (processors >= 2) CheckReported(two.outcome, "\nMode = 1\nNumber of threads = 2");
  CHECK(LargestDifference(one.image, Restore(picture, 1).image) == 0);
  CHECK(LargestDifference(one.image, two.image) < 1);
  CHECK(LargestDifference(Restore(picture, 1, 2, kUsual, "avx").image, two.image) == 0);
  CheckReported(Restore(picture, 1, 1000).outcome,
                "\nMode = 1\nNumber of threads changed from 1000 to " + most +
                    " because it is the maximum for your CPU.\nNumber of threads = " + most);
}

TEST_CASE("a request that cannot be met ends with a reason and nothing written; a missing picture is an empty one") {
  struct {
    int32_t factor, kernelCode, format;
  } const requests[] = {{0, -1, kDefaultFormat},  {-4, -1, kDefaultFormat},         {2, 6, kDefaultFormat},
                        {2, -36, kDefaultFormat}, {2000000000, -1, kDefaultFormat}, {2, -1, 0x100}};
  for (int mode : {0, 1}) {
    for (const auto& [factor, kernelCode, format] : requests) {
      RestoreParameters asked = kUsual;
      asked.factor = factor, asked.kernelCode = kernelCode;
      const Finished finished = Restore(FloatImage(8, 8, format), mode, 1, asked);
      CHECK(finished.outcome.exitCode == 1);
      CHECK(finished.outcome.errors.size() > 10);
      CHECK_FALSE(finished.written);
    }
    const Finished empty = Restore(FloatImage(), mode);
    CHECK(empty.outcome.exitCode == 0);
    CHECK(Contains(empty.outcome.errors, "input.fdib"));
    CHECK((empty.written && empty.image.count == 0));
  }
}
