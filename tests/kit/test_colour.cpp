// Colour and alpha through every command that makes pictures of pictures.
#include <algorithm>
#include <cmath>
#include <doctest/doctest.h>

#include "kit/pictures/picture.h"
#include "kit/pictures/picture_file.h"
#include "kit/pictures/premultiplied.h"
#include "support/kit.h"
#include "support/scratch.h"

using namespace norv;
using test::KitIn;

namespace {

// A disc of alpha 255 on alpha 0, its edge one pixel wide; the colours inside and outside are one each.
Picture Disc(int32_t channels, int32_t bits, float inside, float outside) {
  Picture picture(30, 28, channels, bits);
  for (int32_t r = 0; r < 28; ++r)
    for (int32_t x = 0; x < 30; ++x) {
      const float alpha =
          std::clamp(10.5f - std::hypot(static_cast<float>(x - 15), static_cast<float>(r - 13)), 0.f, 1.f);
      picture.Alpha().z[r][x] = 255 * alpha;
      for (int32_t k = 0; k < picture.Colours(); ++k) picture.plane[k].z[r][x] = alpha > 0 ? inside : outside;
    }
  return picture;
}

// All that makes a picture larger or smaller; `net.net` is beside it.
const char* const kScaling[] = {"enlarge IN OUT --method nearest",
                                "enlarge IN OUT --method cubic",
                                "enlarge IN OUT --method lanczos --factor 3",
                                "enlarge IN OUT --net net.net",
                                "enlarge IN OUT --net net.net --average --shortcut",
                                "enlarge IN OUT --net net.net --threads 4",
                                "restore IN OUT",
                                "restore IN OUT --factor 1 --preset compressed --threads 2",
                                "shrink IN OUT",
                                "shrink IN OUT --factor 3 --order 3"};

// The picture that a line makes of another.
Picture Made(const test::ScratchFolder& folder, std::string line, const std::string& from, const std::string& to) {
  line.replace(line.find("IN"), 2, from).replace(line.find("OUT"), 3, to);
  const test::Outcome outcome = KitIn(folder, line);
  CAPTURE(line);
  CAPTURE(outcome.errors);
  REQUIRE(outcome.exitCode == 0);
  Picture made = ReadPicture(folder / to);
  std::filesystem::remove(folder / to);
  return made;
}

}  // namespace

TEST_CASE("what is transparent has no say in the colour of what is seen") {
  test::ScratchFolder folder;
  REQUIRE(KitIn(folder, "new-net net.net --start lanczos").exitCode == 0);
  for (const int32_t bits : {8, 16})
    for (const int32_t channels : {2, 4}) {
      WritePicture(folder / "white.png", Disc(channels, bits, 255, 0), {});
      WritePicture(folder / "dark.png", Disc(channels, bits, 30, 255), {});
      for (const char* line : kScaling) {
        CAPTURE(line);
        const Picture white = Made(folder, line, "white.png", "out.png"),
                      dark = Made(folder, line, "dark.png", "out.png");
        CHECK((white.channels == channels && white.bits == bits));
        // As far as it shows; restoration is not linear, so that a colour's edge is not quite alpha's.
        float worst = 0;
        for (int32_t k = 0; k < white.Colours(); ++k)
          for (int32_t i = 0; i < white.Alpha().mn; ++i)
            worst = std::max({worst, (255 - white.plane[k].x[i]) * white.Alpha().x[i] / 255,
                              std::abs(dark.plane[k].x[i] - 30) * dark.Alpha().x[i] / 255});
        CHECK(worst <= (std::string(line).starts_with("restore") ? 3 : 1));
        const auto [least, most] = std::minmax_element(white.Alpha().x, white.Alpha().x + white.Alpha().mn);
        CHECK((*least == 0 && *most == 255));
      }
    }
}

TEST_CASE("an opaque picture comes out as the one without alpha") {
  test::ScratchFolder folder;
  REQUIRE(KitIn(folder, "testcard card.png --size 60x53").exitCode == 0);
  REQUIRE(KitIn(folder, "new-net net.net --start lanczos").exitCode == 0);
  Picture opaque = ReadPicture(folder / "card.png");
  opaque.channels = 4;
  opaque.plane[3].dim(60, 53);
  opaque.plane[3].fill(255);
  WritePicture(folder / "opaque.png", opaque, {});
  for (const char* line : kScaling) {
    CAPTURE(line);
    const std::string deep = std::string(line) + " --bits 16";
    const Picture without = Made(folder, deep, "card.png", "out.png"),
                  with = Made(folder, deep, "opaque.png", "out.png");
    for (int32_t k = 0; k < 3; ++k)
      CHECK(std::equal(with.plane[k].x, with.plane[k].x + with.plane[k].mn, without.plane[k].x));
    CHECK(std::all_of(with.Alpha().x, with.Alpha().x + with.Alpha().mn, [](float a) { return a == 255; }));
  }
}

TEST_CASE("colours come back from what scaling left of them and of alpha") {
  // Networks leave a little more or less than 255 of it, and there nothing is divided.
  const float alpha[] = {255.2f, 254.8f, 254, 51, 0.6f, 0.4f, 0.001f, -3, 270},
              colour[] = {300, -7, 127, 40, 90, 30, 30, 2, 135};
  for (const int32_t bits : {8, 16}) {
    Picture picture(9, 1, 2, bits);
    std::copy_n(colour, 9, picture.plane[0].x);
    std::copy_n(alpha, 9, picture.Alpha().x);
    Unpremultiply(picture);
    const float divided[] = {300, -7, 127.5f, 200, 255, bits == 16 ? 255.0f : 0.0f, 0, 0, 127.5f};
    const float clamped[] = {255, 254.8f, 254, 51, 0.6f, 0.4f, 0.001f, 0, 255};
    for (int i = 0; i < 9; ++i) {
      CHECK(picture.plane[0].x[i] == doctest::Approx(divided[i]));
      CHECK(picture.Alpha().x[i] == clamped[i]);
    }
  }
}
