// Results that agree with their picture when they are reduced again, at factors between whole ones too.
#include "kit/measure/agreement.h"
#include "kit/measure/certificate.h"
#include "kit/measure/reduced_rows.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/test_card.h"
#include "kit/scale/refine.h"
#include "kit/scale/resize.h"
#include "kit/scale/scale.h"
#include "raster/right_inverse.h"
#include "support/kit.h"
#include "support/test.h"

namespace {

Picture Card(int32_t width, int32_t height, int32_t channels) {
  Picture card = AllRows(DrawTestCard(width, height)), picture(width, height, channels, 32);
  for (int32_t k = 0; k < channels; ++k) picture.plane[k] = card.plane[k % 3];
  if (picture.HasAlpha())
    for (int32_t i = 0; i < picture.Alpha().mn; ++i) picture.Alpha().x[i] = static_cast<float>(60 + i * 7 % 196);
  return picture;
}

// From the picture's cubic enlargement, so many rows at a time.
Picture Agreed(const Picture& small, const PictureSize& size, int32_t threads, int32_t rowsAtOnce) {
  std::shared_ptr<PassedLuminance> passed;
  PictureSource rows = Resized(KeepingLuminance(HeldPicture(small), passed), size, ResizeFilter::cubic, threads);
  rows = Agreeing(std::move(rows), passed, {small.Width(), small.Height()}, threads);
  Picture made(size.width, size.height, small.channels, small.bits);
  for (int32_t r = 0; r < size.height; r += rowsAtOnce) rows.read(made, r, std::min(rowsAtOnce, size.height - r));
  return made;
}

Certificate CertificateOf(const Picture& small, const Picture& large) {
  const Certifier certifier(small.Shape(), {large.Width(), large.Height()}, -1, {32, false});
  AllRows(certifier.Input(HeldPicture(small)));
  AllRows(certifier.Result(HeldPicture(large)));
  return certifier.Made();
}

}  // namespace

TEST_CASE("what is brought back to a picture is that picture when it is reduced again, of every kind and size") {
  for (const int32_t channels : {1, 2, 3, 4})
    for (const auto& [width, height, wide, high] : {std::tuple{48, 40, 60, 50},
                                                    {48, 40, 72, 60},
                                                    {48, 40, 83, 71},
                                                    {48, 40, 120, 100},
                                                    {20, 17, 100, 85},
                                                    {50, 40, 52, 41},
                                                    {3, 2, 4, 3},
                                                    {1, 5, 2, 9}}) {
      const std::tuple asked = {channels, width, wide};
      CAPTURE(std::get<0>(asked));
      CAPTURE(std::get<1>(asked));
      CAPTURE(std::get<2>(asked));
      const Picture small = Card(width, height, channels);
      const Certificate before =
          CertificateOf(small, AllRows(Resized(HeldPicture(small), {wide, high}, ResizeFilter::cubic, 1)));
      const Certificate made = CertificateOf(small, Agreed(small, {wide, high}, 1, high));
      CHECK(made.rms <= before.rms / 8);
    }
}

TEST_CASE("it is the projection of the whole planes, whatever the strips and threads; no number changes nothing") {
  Picture small = Card(21, 300, 1);
  small.plane[0].z[150][9] = std::numeric_limits<float>::quiet_NaN();
  const PictureSize size{37, 521};
  const Picture large = AllRows(Resized(HeldPicture(small), size, ResizeFilter::cubic, 1));
  const ResampleTable across = ReductionTable(37, 21, *FilterOfKernelCode(-1));
  const ResampleTable down = ReductionTable(521, 300, *FilterOfKernelCode(-1));
  matrix reduced, change;
  ResampleSeparable(large.plane[0], reduced, across, down);
  for (int32_t i = 0; i < reduced.mn; ++i) {
    reduced.x[i] = small.plane[0].x[i] - reduced.x[i];
    if (!std::isfinite(reduced.x[i])) reduced.x[i] = 0;
  }
  ResampleSeparable(reduced, change, RightInverse(across, 37, 0.01, 8), RightInverse(down, 521, 0.01, 8));
  for (int32_t i = 0; i < change.mn; ++i) change.x[i] += large.plane[0].x[i];
  CHECK(std::count_if(change.x, change.x + change.mn, [](float x) { return std::isnan(x); }) < 400);
  for (const int32_t threads : {1, 2, 5})
    for (const int32_t rows : {1, 100, 521}) {
      const Picture made = Agreed(small, size, threads, rows);
      CHECK(std::equal(change.x, change.x + change.mn, made.plane[0].x,
                       [](float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); }));
    }
}

TEST_CASE("enlarge agrees with a clean picture between whole factors, on any number of threads") {
  const ScratchFolder folder;
  Picture card = ShrinkPicture(Card(128, 96, 3), 2, -1);
  card.bits = 8;
  SaveImage(folder / "small.png", card, {});
  const auto rms = [&](const std::string& words) {
    const Outcome run = KitIn(folder, "enlarge small.png large.png --overwrite --certificate " + words);
    const size_t at = run.errors.find("root mean square ");
    REQUIRE(at != std::string::npos);
    return std::stod(run.errors.substr(at + 17));
  };
  for (const char* words : {"--by 1.25", "--by 1.5", "--by 1.75", "--by 2.5", "--by 5", "--by 1.5 --method restore",
                            "--by 1.5 --preset drawn", "--width 100"}) {
    CAPTURE(std::string(words));
    CHECK(rms(words) < 0.1);
  }
  // What is to be smoothed is smoothed, and who turns a setting decides; a network alone is what it is.
  for (const char* words : {"--by 1.5 --preset noisy", "--by 1.5 --lambda 0.035", "--by 1.5 --quick"})
    CHECK(rms(words) > 0.1);
  KitIn(folder, "enlarge small.png one.png --by 1.5 --threads 1");
  KitIn(folder, "enlarge small.png four.png --by 1.5 --threads 4");
  CHECK(norv::test::ReadBytes(folder / "one.png") == norv::test::ReadBytes(folder / "four.png"));
  CHECK(Contains(KitIn(folder, "verify one.png").output, "same bits"));
}
