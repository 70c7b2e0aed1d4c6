// The refinement of an enlargement in strips.
#include <cmath>
#include <doctest/doctest.h>

#include "kit/measure/quality.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/luminance.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/test_card.h"
#include "kit/scale/interpolation.h"
#include "kit/scale/refine.h"
#include "kit/scale/restore_presets.h"
#include "kit/scale/scale.h"
#include "restore/restore_plane.h"
#include "support/kit.h"

using namespace norv;

namespace {

Picture Refined(const Picture& small, const Picture& large, const RestoreParameters& parameters, int32_t threads,
                int32_t rowsAtOnce) {
  std::shared_ptr<PassedLuminance> passed;
  const PictureSource source = KeepingLuminance(HeldPicture(small), passed);
  // The enlargement's rows come as those of the small picture pass by.
  const PictureSource enlarging = {large.Shape(), [&, next = 0](Picture& rows, int32_t at, int32_t count) mutable {
                                     const int32_t f = parameters.factor;
                                     Picture from(small.Width(), (next + count) / f - next / f, small.channels);
                                     source.read(from, 0, from.Height());
                                     for (int32_t k = 0; k < rows.channels; ++k)
                                       for (int32_t r = 0; r < count; ++r)
                                         std::copy_n(large.plane[k].z[next + r], large.Width(),
                                                     rows.plane[k].z[at + r]);
                                     next += count;
                                   }};
  const PictureSource refined = RefinedRows(enlarging, passed, parameters, threads);
  Picture result(large.Width(), large.Height(), large.channels);
  for (int32_t first = 0, count; first < large.Height(); first += count) {
    count = std::min(rowsAtOnce, large.Height() - first);
    refined.read(result, first, count);
  }
  return result;
}

double Largest(const matrix& a, const matrix& b) {
  double largest = 0;
  for (int32_t i = 0; i < a.mn; ++i) largest = std::max(largest, std::abs(double{a.x[i]} - b.x[i]));
  return largest;
}

}  // namespace

TEST_CASE("refined strips are the whole picture's, for any number of threads and rows at a time") {
  RestoreParameters parameters = RestorePreset("clean", 2);
  parameters.emphasis = 0;
  parameters.iterations = 1;
  constexpr int32_t kRows = kRefinedRows / 2;
  for (const int32_t height : {1, 100, kRows, 2 * kRows + 7, 3 * kRows + 30}) {
    CAPTURE(height);
    const Picture original = AllRows(DrawTestCard(64, 2 * height));
    const Picture small = ShrinkPicture(original, 2, -1);
    Picture large(64, 2 * height, small.channels);
    for (int32_t k = 0; k < 3; ++k) large.plane[k] = InterpolatePlane(small.plane[k], 2, Interpolation::lanczos);
    const Picture refined = Refined(small, large, parameters, 1, 50);
    for (const int32_t threads : {2, 3, 16})
      for (int32_t k = 0; k < 3; ++k)
        CHECK(Largest(Refined(small, large, parameters, threads, 333).plane[k], refined.plane[k]) == 0);
    matrix whole = LuminanceOf(large);
    restore(whole, BitMask(), LuminanceOf(small), parameters, nullptr);
    // Steps lead a strip where its own pixels want to go, so that strips end a little beside the whole.
    CHECK(Psnr(LuminanceOf(refined), whole) > (height <= kRows ? 100 : 52));
    if (height >= 100)
      CHECK(Psnr(LuminanceOf(refined), LuminanceOf(original)) > Psnr(LuminanceOf(large), LuminanceOf(original)) + 0.5);
    // Colours keep their distance from the luminance.
    for (int32_t i = 0; i < whole.mn; i += 97)
      CHECK(refined.plane[0].x[i] - refined.plane[2].x[i] ==
            doctest::Approx(large.plane[0].x[i] - large.plane[2].x[i]).epsilon(1e-3));
  }
}

TEST_CASE("enlarge refines what the network for such a picture answers") {
  test::ScratchFolder folder;
  const Picture card = AllRows(DrawTestCard(288, 224));
  SaveImage(folder / "card.png", card, {});
  const auto likeness = [&](const std::string& line) {
    const test::Outcome outcome = test::KitIn(folder, "enlarge " + line + " --overwrite");
    CAPTURE(outcome.errors);
    REQUIRE(outcome.exitCode == 0);
    return std::pair(
        Psnr(WithoutBorder(LuminanceOf(LoadImage(folder / "out.tif")), 4), WithoutBorder(LuminanceOf(card), 4)),
        outcome.errors);
  };
  struct Case {
    const char *small, *more, *says;
  };
  for (const Case& c :
       {Case{"small.png", "", "x2, network x2-48-best, 2 threads, then restored as clean ("},
        Case{"small.png", " --preset drawn", "network x2-48-drawn, 2 threads, then restored as drawn ("},
        Case{"good.jpg", "", "network x2-48-best, 2 threads, then restored as compressed ("},
        Case{"poor.jpg", "", "network x2-48-jpeg, 2 threads ("}}) {
    CAPTURE(std::string(c.small) + c.more);
    const bool jpeg = c.small[5] != '.';
    REQUIRE(test::KitIn(folder, std::string("shrink card.png ") + c.small + " --overwrite" +
                                    (jpeg ? c.small[0] == 'p' ? " --quality 50" : " --quality 95" : ""))
                .exitCode == 0);
    const std::string line = std::string(c.small) + " out.tif";
    const auto [best, said] = likeness(line + c.more + " --threads 2");
    CHECK(test::Contains(said, c.says));
    const std::string bytes = test::ReadBytes(folder / "out.tif");
    likeness(line + c.more + " --threads 3");
    CHECK(test::ReadBytes(folder / "out.tif") == bytes);
    // The card's finest patterns are nothing that a network for JPEG files has seen.
    if (test::Contains(said, "x2-48-jpeg")) continue;
    CHECK(best > likeness(line + " --method lanczos").first + 0.3);
    CHECK(best > likeness(line + " --method net").first);
  }
  CHECK(test::KitIn(folder, "enlarge small.png new.tif --method cubic --preset drawn").exitCode == 2);
  // Values instead of the preset's, also where no restoration would follow by itself.
  const double clean = likeness("small.png out.tif").first;
  CHECK(likeness("small.png out.tif --lambda 2 --lambda-cross 2").first < clean - 0.5);
  CHECK(test::Contains(likeness("poor.jpg out.tif --lambda 0.1").second, "then restored as compressed ("));
}
