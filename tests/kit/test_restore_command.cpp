// Restoration and denoising for people: the same bytes as the tool's modes, and what the options do.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <doctest/doctest.h>

#include "image/bit_image.h"
#include "kit/measure/quality.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"
#include "kit/scale/restore_presets.h"
#include "kit/scale/restored_rows.h"
#include "platform/team.h"
#include "restore/restore_image.h"
#include "support/kit.h"
#include "support/noisy_pictures.h"
#include "support/random_plane.h"
#include "support/restoration.h"
#include "support/scratch.h"

using namespace norv;
using test::KitIn;

namespace {

Picture Coloured(int32_t width, int32_t height) {
  Picture picture(width, height, 3);
  for (int32_t k = 0; k < 3; ++k) {
    picture.plane[k] = test::Scene(width, height);
    for (int32_t i = 0; i < picture.plane[k].mn; ++i)
      picture.plane[k].x[i] =
          std::clamp(std::round(picture.plane[k].x[i] * (1 - 0.2f * static_cast<float>(k))), 0.0f, 255.0f);
  }
  return picture;
}

double Likeness(const std::string& path, const Picture& clean) {
  return Psnr(WithoutBorder(LoadImage(path).plane[0], 6), WithoutBorder(clean.plane[0], 6));
}

}  // namespace

TEST_CASE("restore gives the bytes of norv 0, 1 and 4 with the preset's parameters") {
  test::ScratchFolder folder;
  SaveImage(folder / "a.png", Coloured(31, 47), {});
  REQUIRE(KitIn(folder, "import a.png input.fdib").exitCode == 0);
  REQUIRE(KitIn(folder, "import a.png input.bit").exitCode == 0);
  const RestoreParameters parameters = RestorePreset("compressed", 2);
  const int threads = std::min(2, ProcessorCount());
  const auto norv = [&](int mode, int count) {
    CHECK(
        test::Run({.arguments = test::ModeWords(mode, parameters, count), .environment = {"NORV_DIR=" + folder.Path()}})
            .exitCode == 0);
    return test::ReadBytes(folder / (mode < 2 ? "output.fdib" : "output.bit"));
  };
  const auto kit = [&](std::vector<std::string> more) {
    const bool bytes = more.back() == "--bits-road";
    const std::string out = folder / (bytes ? "kit.bit" : "kit.fdib");
    const test::Outcome outcome = KitIn(folder, "restore a.png " + out + " --overwrite --preset compressed", more);
    CHECK(outcome.output + outcome.errors == "");
    if (!bytes) return test::ReadBytes(out);
    // Through our own writer, which clears the padding of rows.
    SaveImage(folder / "again.bit", LoadImage(folder / "output.bit"), test::Over());
    CHECK(test::ReadBytes(out).size() == 8 + 94 * static_cast<size_t>(BitStride(62)));
    return std::string(test::ReadBytes(out) == test::ReadBytes(folder / "again.bit") ? "same" : "other");
  };
  for (const char* count : {"1", "2", "3", "64"}) CHECK((norv(0, 1) == kit({"--threads", count})));
  CHECK((norv(0, 1) == kit({"--by", "2"})));
  CHECK((norv(1, 1) == kit({"--bands", "1"})));
  CHECK((norv(1, threads) == kit({"--bands", std::to_string(threads)})));
  CHECK((norv(1, threads) == kit({"--bands", std::to_string(threads), "--threads", "2"})));
  CHECK((norv(1, 1) != kit({"--threads", "1"})));
  // More bands than the tool has threads: as it would be with that many.
  FloatImage image;
  REQUIRE_FALSE(image.Load(folder / "input.fdib", Folder::asGiven));
  RestoreImageInBands(image, parameters, 6, 6);
  REQUIRE_FALSE(image.Save(folder / "output.fdib", Folder::asGiven));
  CHECK((test::ReadBytes(folder / "output.fdib") == kit({"--bands", "6"})));
  const test::Outcome tooMany = KitIn(folder, "restore a.png kit.fdib --overwrite --preset compressed --bands 7");
  CHECK(tooMany.errors.find("6 bands at most") != std::string::npos);
  CHECK((norv(1, 1) == test::ReadBytes(folder / "kit.fdib")));
  norv(4, threads);
  CHECK((kit({"--bands", std::to_string(threads), "--bits-road"}) == "same"));
  norv(4, 1);
  CHECK((kit({"--threads", "3", "--bits-road"}) == "same"));
}

TEST_CASE("pictures beyond a size are restored in strips: the whole's to the eye, the same ones on any threads") {
  RestoreParameters parameters = RestorePreset("clean", 2);
  parameters.iterations = 2;
  constexpr StripSizes kSmall{20000, 12000};
  for (const int32_t channels : {1, 2, 3, 4})
    for (const int32_t height : {96, 250}) {
      CAPTURE(channels);
      CAPTURE(height);
      Picture small = Coloured(50, height);
      small.plane[3] = small.plane[1];
      small.channels = channels;
      const auto restored = [&](int32_t threads, const StripSizes& sizes) {
        return AllRows(RestoredRows(HeldPicture(small), parameters, threads, sizes));
      };
      const Picture whole = restored(1, {}), strips = restored(1, kSmall), team = restored(3, kSmall);
      for (int32_t k = 0; k < channels; ++k) {
        CHECK(test::SameBits(strips.plane[k], team.plane[k]));
        CHECK(test::SameBits(strips.plane[k], whole.plane[k]) == (height == 96));
        CHECK(Psnr(strips.plane[k], whole.plane[k]) > 60);
      }
      CHECK(RestoredRowsOf(small.Shape(), 2, kSmall) == (height > 100 ? 63 : height));
    }
}

TEST_CASE("every preset beats Lanczos on the pictures that it is for") {
  test::ScratchFolder folder;
  const Picture clean = Coloured(144, 120);
  SaveImage(folder / "large.png", clean, {});
  for (const char* factor : {"2", "3", "4"}) {
    CAPTURE(std::string(factor));
    REQUIRE(KitIn(folder, std::string("shrink large.png clean.png --overwrite --factor ") + factor).exitCode == 0);
    REQUIRE(KitIn(folder, "export clean.png compressed.jpg --overwrite --quality 40").exitCode == 0);
    Picture noisy = LoadImage(folder / "clean.png");
    for (int k = 0; k < 3; ++k) test::AddNoise(noisy.plane[k], 12, 3 + k);
    SaveImage(folder / "noisy.png", noisy, test::Over());
    for (const std::string small : {"clean.png", "compressed.jpg", "noisy.png"}) {
      CAPTURE(small);
      const std::string preset = small.substr(0, small.find('.'));
      CHECK(
          KitIn(folder, "enlarge " + small + " lanczos.tif --overwrite --method lanczos --factor " + factor).exitCode ==
          0);
      CHECK(KitIn(folder, "restore " + small + " restored.tif --overwrite --factor " + factor + " --preset " + preset)
                .exitCode == 0);
      const double gain = Likeness(folder / "restored.tif", clean) - Likeness(folder / "lanczos.tif", clean);
      CHECK(gain > (preset == "compressed" ? 0 : 0.3));
    }
  }
}

TEST_CASE("single parameters stand instead of the preset's, and wrong ones are refused") {
  test::ScratchFolder folder;
  SaveImage(folder / "a.png", Coloured(20, 20), {});
  const auto restore = [&](std::vector<std::string> more) {
    const int code = KitIn(folder, "restore a.png out.fdib --overwrite", more).exitCode;
    return code == 0 ? test::ReadBytes(folder / "out.fdib") : std::to_string(code);
  };
  const std::string plain = restore({});
  for (const RestoreKnob& knob : RestoreKnobs()) {
    const std::string option = knob.option;
    CAPTURE(option);
    const char* type = option.starts_with("--shape") ? "6" : option == "--edge-threshold" ? "3" : "5";
    if (option == "--type")
      CHECK((restore({option, "4"}) != plain));
    else
      CHECK((restore({"--type", type, option, "4"}) != restore({"--type", type})));
  }
  CHECK((restore({"--preset", "clean", "--factor", "2"}) == plain));
  for (const char* line : {"--preset pretty", "--factor 0", "--steps 2.5", "--lambda much"})
    CHECK(restore(test::Words(line)) == "2");
  CHECK(restore({"--kernel", "7"}) == "1");  // the older name of --filter
}

TEST_CASE("restoration is turned by people's words") {
  test::ScratchFolder folder;
  SaveImage(folder / "large.png", Coloured(200, 160), {});
  REQUIRE(KitIn(folder, "shrink large.png sharp.png").exitCode == 0);
  REQUIRE(KitIn(folder, "shrink large.png blurred.png --filter -20").exitCode == 0);  // a Gaussian of one pixel
  const auto psnr = [&](const std::string& words) {
    const test::Outcome outcome = KitIn(folder, "restore " + words + " out.tif --overwrite");
    CAPTURE(outcome.errors);
    REQUIRE(outcome.exitCode == 0);
    return Likeness(folder / "out.tif", LoadImage(folder / "sharp.png"));
  };
  const double blurred = Likeness(folder / "blurred.png", LoadImage(folder / "sharp.png"));
  CHECK(psnr("blurred.png --by 1 --deblur 1.0") > blurred + 4);
  CHECK(psnr("blurred.png --by 1 --deblur 1.0") > psnr("blurred.png --by 1 --deblur 0.5") + 1);
  // Sharper keeps more of the noise than smoother does, twice more so.
  const auto roughness = [&](const char* words) {
    REQUIRE(KitIn(folder, std::string("restore sharp.png out.fdib --overwrite ") + words).exitCode == 0);
    const matrix plane = LoadImage(folder / "out.fdib").plane[0];
    double sum = 0;
    for (int32_t r = 0; r < plane.n; ++r)
      for (int32_t c = 1; c < plane.m; ++c) sum += std::abs(plane.z[r][c] - plane.z[r][c - 1]);
    return sum;
  };
  const double plain = roughness("");
  CHECK(roughness("--sharper") > plain);
  CHECK(roughness("--sharper --sharper") > roughness("--sharper"));
  CHECK(roughness("--smoother") < plain);
  CHECK(roughness("--smoother --smoother") < roughness("--smoother"));
  for (const char* line : {"--deblur often", "--deblur 2", "--deblur 1 --filter -1", "--sharper --smoother",
                           "--shape-dot 1", "--type 5 --edge-threshold 9", "--quality 50"}) {
    const test::Outcome refused = KitIn(folder, std::string("restore sharp.png no.png ") + line);
    CAPTURE(refused.errors);
    CHECK(refused.exitCode == 2);
    CHECK_FALSE(std::filesystem::exists(folder / "no.png"));
  }
}

TEST_CASE("grey pictures stay grey, alpha is kept or dropped with a warning") {
  test::ScratchFolder folder;
  Picture both(16, 12, 2);
  both.plane[1] = test::Scene(16, 12);
  both.plane[0].fill(255);
  SaveImage(folder / "ga.png", both, {});
  SaveImage(folder / "alone.png", GreyPicture(both.Alpha()), {});
  CHECK(KitIn(folder, "restore alone.png large.png").exitCode == 0);
  CHECK(KitIn(folder, "restore ga.png out.png").exitCode == 0);
  const Picture large = ReadPicture(folder / "out.png");
  CHECK(large.channels == 2);
  CHECK(large.Width() == 32);
  CHECK(Psnr(large.Alpha(), ReadPicture(folder / "large.png").plane[0]) > 50);
  const test::Outcome bytes = KitIn(folder, "restore ga.png out.png --bits-road --overwrite");
  CHECK(bytes.errors.find("alpha") != std::string::npos);
  CHECK(ReadPicture(folder / "out.png").channels == 3);
}

TEST_CASE("denoising gains on noisy pictures, grey or coloured, and the best way more than the fast one") {
  test::ScratchFolder folder;
  for (const int32_t channels : {1, 3}) {
    CAPTURE(channels);
    Picture clean = Coloured(96, 80);
    clean.channels = channels;
    SaveImage(folder / "clean.png", clean, test::Over());
    REQUIRE(KitIn(folder, "noise clean.png noisy.tif --overwrite --sigma 20 --seed 3").exitCode == 0);
    const double noisy = Likeness(folder / "noisy.tif", clean);
    CHECK(noisy == doctest::Approx(22.1).epsilon(0.02));
    const auto denoised = [&](std::vector<std::string> more) {
      const test::Outcome outcome = KitIn(folder, "denoise noisy.tif out.tif --overwrite", more);
      CHECK(outcome.output + outcome.errors == "");
      CHECK(ReadPicture(folder / "out.tif").channels == channels);
      return Likeness(folder / "out.tif", clean);
    };
    const double fast = denoised({"--fast", "--noise", "20"});
    CHECK(fast > noisy + 5);
    CHECK(denoised({}) > noisy + 5);
    CHECK(denoised({"--best", "--noise", "20", "--threads", "2"}) > fast);
    // The whole noise of a grey picture is taken, not its luminance's part of it.
    CHECK(fast > denoised({"--noise", "13.37"}));
  }
  CHECK_FALSE(std::filesystem::exists(folder / "dr0.mat"));
  CHECK(KitIn(folder, "denoise noisy.tif out.tif --fast --best").exitCode == 2);
}

TEST_CASE("noise is removed before enlarging and restoring when asked") {
  test::ScratchFolder folder;
  SaveImage(folder / "clean.png", Coloured(96, 80), {});
  const Picture clean = LoadImage(folder / "clean.png");
  REQUIRE(KitIn(folder, "shrink clean.png small.png").exitCode == 0);
  REQUIRE(KitIn(folder, "noise small.png noisy.png --sigma 15").exitCode == 0);
  for (const char* command : {"enlarge", "restore"}) {
    CHECK(KitIn(folder, std::string(command) + " noisy.png plain.tif --overwrite").exitCode == 0);
    CHECK(KitIn(folder, std::string(command) + " noisy.png denoised.tif --denoise --overwrite").exitCode == 0);
    CHECK(Likeness(folder / "denoised.tif", clean) > Likeness(folder / "plain.tif", clean) + 1);
  }
}
