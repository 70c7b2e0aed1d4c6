// What is found in pictures: the filter that made them small, and their blur.
#include <doctest/doctest.h>

#include "kit/measure/quality.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/luminance.h"
#include "kit/search/blur_estimate.h"
#include "kit/search/dead_leaves.h"
#include "kit/search/filter_estimate.h"
#include "kit/search/filter_ranking.h"
#include "kit/search/power_spectrum.h"
#include "support/kit.h"
#include "support/test.h"

using namespace norv;
using test::KitIn;

TEST_CASE("power of noise is its variance at every frequency, of a wave where it is") {
  matrix noise = test::RandomPlane(512, 512, 3, -30, 30);
  for (const double power : PowerInCells(noise)) CHECK(power == doctest::Approx(300).epsilon(0.25));
  matrix wave(128, 128);
  for (int32_t y = 0; y < 128; ++y)
    for (int32_t x = 0; x < 128; ++x)
      wave.z[y][x] = static_cast<float>(100 * std::cos(2 * 3.14159265358979 * 0.25 * x));
  const std::vector<double> powers = PowerInCells(wave);
  const size_t most = std::max_element(powers.begin(), powers.end()) - powers.begin();
  CHECK(SpectrumCells()[most].radius == doctest::Approx(0.25).epsilon(0.1));
  CHECK(SpectrumCells()[most].angle < 0.3);  // along rows
}

TEST_CASE("the blur of a picture is found in it, and none where none is") {
  for (const unsigned seed : {1u, 2u, 3u}) {
    const matrix sharp = test::DeadLeaves(320, 256, seed);
    for (const double sigma : {0.0, 0.7, 1.0, 1.4}) {
      CAPTURE(seed);
      CAPTURE(sigma);
      const BlurEstimate blur = EstimateBlur({test::Blurred(sharp, sigma), 8, true});
      if (sigma > 0)
        CHECK(blur.sigma == doctest::Approx(sigma).epsilon(0.12));
      else
        CHECK_FALSE(blur.Found());
    }
  }
}

TEST_CASE("restore takes back a blur that nobody told it, and leaves a sharp picture alone") {
  test::ScratchFolder folder;
  const matrix sharp = test::Blurred(test::DeadLeaves(320, 256, 5), 0);
  SaveImage(folder / "sharp.png", GreyPicture(matrix(sharp)), {});
  const matrix blurred = test::Blurred(sharp, 1.0);
  SaveImage(folder / "blurred.png", GreyPicture(matrix(blurred)), {});
  const test::Outcome restored = KitIn(folder, "restore blurred.png restored.png --by 1 --deblur auto");
  CHECK(restored.exitCode == 0);
  CHECK(restored.errors.find("blur: Gaussian of ") != std::string::npos);
  const matrix result = LoadImage(folder / "restored.png").plane[0];
  CHECK(Psnr(result, sharp) > Psnr(blurred, sharp) + 4.75);
  const test::Outcome left = KitIn(folder, "restore sharp.png same.png --by 1 --deblur auto");
  CHECK(left.errors.find("no blur found") != std::string::npos);
  CHECK(std::isinf(Psnr(LoadImage(folder / "same.png").plane[0], sharp)));
}

TEST_CASE("the filter that made a picture small is found with the large one") {
  test::ScratchFolder folder;
  SaveImage(folder / "large.png", GreyPicture(test::DeadLeaves(401, 302, 7)), {});
  for (const int factor : {2, 3})
    for (const int order : {-1, -2, 0, 1, 3, -16}) {
      CAPTURE(factor);
      CAPTURE(order);
      const std::string words = " --overwrite --by " + std::to_string(factor) + " --filter " + std::to_string(order);
      REQUIRE(KitIn(folder, "shrink large.png small.png" + words).exitCode == 0);
      const FilterRanking ranking =
          RankFilters(LoadLuminance(folder / "small.png"), LoadLuminance(folder / "large.png"));
      CHECK(ranking.factor == factor);
      CHECK(ranking.matches[0].orders[0] == order);
      CHECK(ranking.Margin() > 0.2);
      CHECK(ranking.IsSure());
      CHECK(ranking.Explains());
    }
  const test::Outcome said = KitIn(folder, "filter small.png large.png");
  CHECK(said.exitCode == 0);
  CHECK(said.output.find("sure: Gaussian of 0.6 pixels, by 3") != std::string::npos);
  // Alone: the kind of filter, and a Gaussian by its width.
  CHECK(EstimateFilter(LoadOpaqueLuminance(folder / "small.png"))[0].orders[0] == -16);
  REQUIRE(KitIn(folder, "shrink large.png small.png --overwrite --filter -18").exitCode == 0);
  const auto families = EstimateFilter(LoadOpaqueLuminance(folder / "small.png"));
  CHECK(std::abs(families[0].orders[0] + 18) <= 1);
  double sum = 0;
  for (const FilterFamily& family : families) sum += family.probability;
  CHECK(sum == doctest::Approx(1));
  CHECK(KitIn(folder, "filter small.png").output.find("Gaussian of about 0.") != std::string::npos);
}

TEST_CASE("what nothing can be found in is refused in words") {
  test::ScratchFolder folder;
  matrix flat(80, 80);
  flat.fill(7);
  SaveImage(folder / "flat.png", GreyPicture(std::move(flat)), {});
  SaveImage(folder / "tiny.png", GreyPicture(test::RandomPlane(20, 90, 1)), {});
  SaveImage(folder / "large.png", GreyPicture(test::RandomPlane(50, 181, 1)), {});
  for (const char* line :
       {"filter flat.png", "filter tiny.png", "filter tiny.png large.png", "filter tiny.png tiny.png",
        "filter missing.png", "filter tiny.png missing.png", "restore tiny.png out.png --by 1 --deblur auto",
        "restore flat.png out.png --by 1 --deblur auto"}) {
    CAPTURE(std::string(line));
    const test::Outcome refused = KitIn(folder, line);
    CHECK(refused.exitCode == 1);
    CHECK(refused.output == "");
    CHECK(refused.errors.starts_with("norvkit: "));
    CHECK_FALSE(std::filesystem::exists(folder / "out.png"));
  }
  for (const char* line : {"filter", "filter flat.png tiny.png large.png", "restore flat.png out.png --deblur often",
                           "restore flat.png out.png --deblur 1.6"})
    CHECK(KitIn(folder, line).exitCode == 2);
}
