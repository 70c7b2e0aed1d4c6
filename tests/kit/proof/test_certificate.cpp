// How far results, reduced again, are from what they are made of.
#include "kit/measure/certificate.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/luminance.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/picture_samples.h"
#include "kit/pictures/test_card.h"
#include "kit/scale/premultiplied.h"
#include "kit/scale/resize.h"
#include "raster/filters.h"
#include "support/kit.h"
#include "support/test.h"

namespace {

Picture Card(int32_t width, int32_t height, int32_t channels) {
  Picture card = AllRows(DrawTestCard(width, height));
  Picture picture(width, height, channels, 8);
  for (int32_t k = 0; k < picture.Colours(); ++k) picture.plane[k] = card.plane[k];
  if (picture.HasAlpha())
    for (int32_t i = 0; i < picture.Alpha().mn; ++i) picture.Alpha().x[i] = static_cast<float>(i * 7 % 256);
  return picture;
}

double Rms(const std::vector<const matrix*>& a, const std::vector<const matrix*>& b, double& largest) {
  double squares = 0, count = 0;
  for (size_t k = 0; k < a.size(); ++k)
    for (int32_t i = 0; i < a[k]->mn; ++i, ++count) {
      const double difference = double{a[k]->x[i]} - b[k]->x[i];
      squares += difference * difference;
      largest = std::max(largest, std::abs(difference));
    }
  return std::sqrt(squares / count);
}

// The whole pictures, reduced as training pictures are.
Certificate Plain(Picture input, Picture result, int32_t factor, int32_t code) {
  Premultiply(input);
  Premultiply(result);
  matrix taps;
  BuildTaps(taps, factor, *FilterOfKernelCode(code));
  Picture reduced(input.Width(), input.Height(), input.Colours());
  for (int32_t k = 0; k < input.Colours(); ++k) ShrinkMatrix(reduced.plane[k], result.plane[k], taps);
  if (input.HasAlpha()) input.channels = input.Colours();
  const matrix before = LuminanceOf(input), after = LuminanceOf(reduced);
  Certificate made;
  made.rms = Rms({&before}, {&after}, made.largest);
  if (input.IsGrey()) return made;
  made.colours.emplace();
  made.colours->rms = Rms({&input.plane[0], &input.plane[1], &input.plane[2]},
                          {&reduced.plane[0], &reduced.plane[1], &reduced.plane[2]}, made.colours->largest);
  return made;
}

Certificate OnTheWay(const Picture& input, const Picture& result, int32_t code, const Rounding& rounding,
                     int32_t rowsAtOnce) {
  const Certifier certifier(input.Shape(), {result.Width(), result.Height()}, code, rounding);
  AllRows(certifier.Input(HeldPicture(input)));
  const PictureSource rows = certifier.Result(HeldPicture(result));
  Picture seen(result.Width(), result.Height(), result.channels, result.bits);
  for (int32_t first = 0; first < result.Height(); first += rowsAtOnce)
    rows.read(seen, first, std::min(rowsAtOnce, result.Height() - first));
  CHECK(std::equal(seen.plane[0].x, seen.plane[0].x + seen.plane[0].mn, result.plane[0].x));
  const matrix& map = certifier.Map();
  CHECK(*std::max_element(map.x, map.x + map.mn) == doctest::Approx(certifier.Made().largest));
  return certifier.Made();
}

}  // namespace

TEST_CASE("a certificate made while rows pass is the whole pictures', for every kind, factor and filter") {
  for (const int32_t channels : {1, 2, 3, 4})
    for (const auto& [factor, code, width, height] :
         {std::tuple{2, -1, 37, 29}, {3, -1, 21, 40}, {4, 0, 9, 7}, {1, -20, 30, 17}, {2, -33, 1, 3}, {5, 3, 3, 1}}) {
      const std::tuple asked = {channels, factor, code};
      CAPTURE(std::get<0>(asked));
      CAPTURE(std::get<1>(asked));
      CAPTURE(std::get<2>(asked));
      const Picture input = Card(width, height, channels);
      Picture result = Card(width * factor, height * factor, channels);
      for (int32_t i = 0; i < result.plane[0].mn; i += 5) result.plane[0].x[i] += 30.3f;  // beyond white too
      const Certificate plain = Plain(input, result, factor, code);
      int64_t moved = 0;
      const Certificate plainRounded = Plain(input, ToPicture(ToSamples(result, 8, moved)), factor, code);
      for (const int32_t rows : {1, 7, 1000}) {
        const Certificate made = OnTheWay(input, result, code, {8, false}, rows);
        CHECK(made.largest == doctest::Approx(plain.largest).epsilon(1e-3));
        CHECK(made.rms == doctest::Approx(plain.rms).epsilon(1e-3));
        CHECK(made.largestRounded == doctest::Approx(plainRounded.largest).epsilon(1e-3));
        CHECK(made.rmsRounded == doctest::Approx(plainRounded.rms).epsilon(1e-3));
        REQUIRE(made.colours.has_value() == plain.colours.has_value());
        if (!plain.colours) continue;
        CHECK(made.colours->largest == doctest::Approx(plain.colours->largest).epsilon(1e-3));
        CHECK(made.colours->rms == doctest::Approx(plain.colours->rms).epsilon(1e-3));
      }
      CHECK(OnTheWay(input, result, code, {8, true}, 1).rmsRounded ==
            OnTheWay(input, result, code, {8, true}, 1000).rmsRounded);
      const Certificate floats = OnTheWay(input, result, code, {32, false}, 50);
      CHECK(floats.largestRounded == floats.largest);
      CHECK(floats.rmsRounded == floats.rms);
    }
}

TEST_CASE("what is reduced to any size is reduced without aliasing, and what is no number has no part") {
  const Picture input = Card(40, 30, 3);
  Picture result = AllRows(Resized(HeldPicture(input), {55, 47}, ResizeFilter::cubic, 1));
  const Picture again = AllRows(Resized(HeldPicture(result), {40, 30}, ResizeFilter::cubic, 1));
  const matrix before = LuminanceOf(input), after = LuminanceOf(again);
  double largest = 0;
  const double rms = Rms({&before}, {&after}, largest);
  const Certificate made = OnTheWay(input, result, -1, {16, false}, 11);
  CHECK(made.rms == doctest::Approx(rms).epsilon(1e-3));
  CHECK(made.largest == doctest::Approx(largest).epsilon(1e-3));
  CHECK(Contains(made.filter, "any size"));
  result.plane[1].x[0] = std::numeric_limits<float>::quiet_NaN();
  const Certificate damaged = OnTheWay(input, result, -1, {32, false}, 11);
  CHECK(damaged.rms == doctest::Approx(rms).epsilon(0.1));
  CHECK_THROWS(Certifier(input.Shape(), {80, 60}, 99, {8, false}));
}

TEST_CASE("--certificate says in a line how much is invented") {
  const ScratchFolder folder;
  SaveImage(folder / "small.png", Card(48, 40, 3), {});
  SaveImage(folder / "grey.png", Card(48, 40, 1), {});
  const std::string line = "reduced again (cubic, order -1): at most ";
  for (const char* command : {"enlarge small.png", "enlarge small.png --by 3 --quick", "enlarge - --to png",
                              "restore small.png --by 1", "restore grey.png --by 2"}) {
    CAPTURE(command);
    std::vector<std::string> words = Words(command);
    words.insert(words.begin() + 2, "large.png");
    words.insert(words.end(), {"--certificate", "--overwrite"});
    const Outcome run = norv::test::Run({.arguments = words,
                                         .executable = NorvkitExecutable(),
                                         .directory = folder.Path(),
                                         .input = norv::test::ReadBytes(folder / "small.png")});
    CHECK(run.exitCode == 0);
    const size_t at = run.errors.find(line);
    REQUIRE(at != std::string::npos);
    CHECK(run.output == "");
    // What restoration holds to, a plain network pass only comes near to.
    const bool refined = !Contains(command, "--quick");
    const double rms = std::stod(run.errors.substr(run.errors.find("root mean square ", at) + 17));
    CHECK(rms > 0);
    CHECK((rms < 0.5) == refined);
    CHECK(Contains(run.errors, "red, green and blue") == !Contains(command, "grey"));
  }
  CHECK(Contains(KitIn(folder, "restore small.png soft.png --by 1 --deblur 0.7 --certificate").errors,
                 "(Gaussian, order -17)"));
  CHECK(Contains(KitIn(folder, "enlarge small.png any.png --width 70 --certificate").errors, "any size"));
  CHECK_FALSE(Contains(KitIn(folder, "enlarge small.png silent.png").errors, "reduced"));
}
