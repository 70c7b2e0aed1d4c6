// The first command that anyone types, and what it chooses: networks by name, sizes, words for people.
#include <algorithm>
#include <cmath>
#include <doctest/doctest.h>
#include <filesystem>

#include "kit/measure/quality.h"
#include "kit/models/network_plan.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/luminance.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/test_card.h"
#include "kit/scale/resize.h"
#include "support/kit.h"
#include "support/random_plane.h"

using namespace norv;
using test::Contains;
using test::KitIn;

namespace {

// norvkit where no networks are but those of a folder.
test::Outcome KitWithModels(const test::ScratchFolder& folder, const std::string& line, const std::string& models) {
  const std::string alone = folder / "alone-norvkit";
  std::filesystem::copy_file(test::NorvkitExecutable(), alone, std::filesystem::copy_options::skip_existing);
  return test::Run({.arguments = test::Words(line),
                    .environment = {"NORV_MODELS=" + models},
                    .executable = alone,
                    .directory = folder.Path()});
}

double Likeness(const std::string& path, const Picture& clean) {
  return Psnr(WithoutBorder(LuminanceOf(LoadImage(path)), 8), WithoutBorder(LuminanceOf(clean), 8));
}

}  // namespace

TEST_CASE("the first command takes the best network, says so, and beats interpolation at every size") {
  test::ScratchFolder folder;
  const Picture card = AllRows(DrawTestCard(240, 192));
  SaveImage(folder / "card.png", card, {});
  struct Way {
    const char *by, *network, *quick;
  };
  for (const Way& way : {Way{"2", "x2, network x2-48-best, ", "x2, network x2-48-wide, "},
                         Way{"3", "x3, network x2-48-best twice, ", "x3, network x4-48, "},
                         Way{"4", "x4, network x2-48-best twice, ", "x4, network x4-48, "},
                         Way{"1.5", "x1.5, network x2-48-best, ", "x1.5, network x2-48-wide, "}}) {
    CAPTURE(std::string(way.by));
    const std::string by = std::string(" --by ") + way.by;
    REQUIRE(KitIn(folder, "shrink card.png small.png --overwrite" + by).exitCode == 0);
    const test::Outcome best = KitIn(folder, "enlarge small.png best.tif --overwrite" + by);
    const test::Outcome quick = KitIn(folder, "enlarge small.png quick.tif --overwrite --quick" + by);
    CHECK((best.exitCode == 0 && quick.exitCode == 0 && best.output == ""));
    CHECK(Contains(best.errors, way.network));
    CHECK(Contains(quick.errors, way.quick));
    CHECK(std::ranges::count(best.errors, '\n') == 1);
    REQUIRE(KitIn(folder, "enlarge small.png lanczos.tif --overwrite --method lanczos" + by).exitCode == 0);
    CHECK(Likeness(folder / "best.tif", card) > Likeness(folder / "quick.tif", card));
    CHECK(Likeness(folder / "quick.tif", card) > Likeness(folder / "lanczos.tif", card) + 0.3);
  }
  // Which is what the words of the network's own file and options say, too.
  REQUIRE(KitIn(folder, "enlarge small.png a.fdib --method net").exitCode == 0);
  const std::string file = test::SourceFolder() + "/models/x2-48-best.net";
  for (const std::string shortcut : {"--shortcut", "--luminance-only"}) {
    REQUIRE(KitIn(folder, "enlarge small.png b.fdib --overwrite --average " + shortcut + " --net " + file).exitCode ==
            0);
    CHECK((test::ReadBytes(folder / "a.fdib") == test::ReadBytes(folder / "b.fdib")));
  }
}

TEST_CASE("sizes are what was asked for, in proportion") {
  test::ScratchFolder folder;
  SaveImage(folder / "a.png", AllRows(DrawTestCard(101, 67)), {});
  struct Size {
    const char* line;
    int32_t width, height;  // 0: refused
  };
  for (const Size& size :
       {Size{"enlarge --by 1.5", 152, 101}, Size{"enlarge --factor 3", 303, 201},
        Size{"enlarge --by 8 --quick", 808, 536}, Size{"enlarge --width 200", 200, 133},
        Size{"enlarge --height 134", 202, 134}, Size{"enlarge --longest 250", 250, 166},
        Size{"enlarge --width 202 --height 133", 202, 133}, Size{"enlarge --width 300 --height 150", 226, 150},
        Size{"enlarge --width 90", 0, 0}, Size{"enlarge --width 101", 0, 0}, Size{"shrink --by 2.5", 40, 27},
        Size{"shrink --longest 30 --bits 16", 30, 20}, Size{"shrink --width 102", 0, 0},
        Size{"enlarge --method nearest --by 1.5", 152, 101}, Size{"enlarge --method cubic --width 1111", 1111, 737}}) {
    CAPTURE(std::string(size.line));
    std::filesystem::remove(folder / "out.png");
    std::vector<std::string> words = test::Words(size.line);
    words.insert(words.begin() + 1, {"a.png", "out.png"});
    const test::Outcome outcome =
        test::Run({.arguments = words, .executable = test::NorvkitExecutable(), .directory = folder.Path()});
    CAPTURE(outcome.errors);
    CHECK(outcome.exitCode == (size.width == 0));
    CHECK(std::filesystem::exists(folder / "out.png") == (size.width != 0));
    if (size.width == 0) continue;
    const PictureShape shape = OpenImage(folder / "out.png").shape;
    CHECK((shape.width == size.width && shape.height == size.height));
    CHECK(Contains(outcome.errors, "keeps the picture's proportions") == Contains(size.line, "--height 150"));
  }
}

TEST_CASE("the resampler keeps constants, does not alias, and gives the same rows however they are asked for") {
  for (const ResizeFilter filter : {ResizeFilter::nearest, ResizeFilter::cubic, ResizeFilter::lanczos})
    for (const int32_t from : {1, 2, 3, 7, 40, 301})
      for (const int32_t to : {1, 2, 5, 39, 300, 700}) {
        const ResampleTable table = ResizeTable(from, to, filter);
        CAPTURE(from);
        CAPTURE(to);
        REQUIRE(table.Length() == to);
        double wrong = 0;
        for (int32_t k = 0; k < to; ++k) {
          double sum = 0, centre = 0;
          for (int32_t j = 0; j < table.taps; ++j) {
            const double weight = table.weights[size_t(k) * size_t(table.taps) + size_t(j)];
            sum += weight;
            centre += weight * (table.start[k] + j);
          }
          CHECK((table.start[k] >= 0 && table.start[k] + table.taps <= from));
          CHECK(std::abs(sum - 1) < 1e-5);
          // Away from the ends, symmetric about where it is.
          const double position = (k + 0.5) * from / to - 0.5, reach = 4 * std::max(1.0, double(from) / to);
          if (filter != ResizeFilter::nearest && position > reach && position < from - 1 - reach)
            wrong = std::max(wrong, std::abs(centre - position) / std::max(1.0, double(from) / to));
        }
        CHECK(wrong < 0.02);
      }
  // The finest stripes there are vanish when a third of the pixels go.
  Picture stripes(90, 60, 1);
  for (int32_t i = 0; i < stripes.plane[0].mn; ++i) stripes.plane[0].x[i] = i % 2 ? 255.0f : 0.0f;
  const Picture small = AllRows(Resized(HeldPicture(stripes), {60, 40}, ResizeFilter::lanczos, 1));
  for (int32_t c = 5; c < 55; ++c) CHECK(std::abs(small.plane[0].z[20][c] - 127.5f) < 6);
  Picture noise(53, 700, 2);
  for (matrix* plane : {&noise.plane[0], &noise.plane[1]}) *plane = test::RandomPlane(53, 700, 3, 0, 255);
  const PictureSize size{40, 611};
  const Picture whole = AllRows(Resized(HeldPicture(noise), size, ResizeFilter::lanczos, 1));
  const PictureSource rows = Resized(HeldPicture(noise), size, ResizeFilter::lanczos, 3);
  for (int32_t r = 0; r < size.height; ++r) {
    Picture row(size.width, 1, 2);
    rows.read(row, 0, 1);
    for (int k = 0; k < 2; ++k) CHECK(std::equal(row.plane[k].x, row.plane[k].x + size.width, whole.plane[k].z[r]));
  }
}

TEST_CASE("networks are found by name, one's own among them, and chosen by what they are made for") {
  test::ScratchFolder folder;
  const std::string models = test::SourceFolder() + "/models";
  SaveImage(folder / "a.png", AllRows(DrawTestCard(60, 50)), {});
  const test::Outcome list = KitIn(folder, "models");
  for (const char* row : {"x2-48 ", "x2-8 ", "x4-48            x4      photographs  30.27  30.16  "})
    CHECK(Contains(list.output, row));
  CHECK((list.exitCode == 0 && list.errors == ""));
  std::filesystem::create_directory(folder / "mine");
  std::filesystem::copy_file(models + "/x2-8.net", folder / "mine/own.net");
  test::WriteBytes(folder / "mine/broken.net", "no network");
  const test::Outcome own = KitWithModels(folder, "models", "missing:mine");
  CHECK(Contains(own.output, "own   x2      -"));
  CHECK_FALSE(Contains(own.output, "broken"));
  CHECK(Contains(KitWithModels(folder, "enlarge a.png b.png", "mine").errors, "x2, network own, "));
  CHECK(Contains(KitWithModels(folder, "enlarge a.png c.png --model own --by 4", "mine").errors, "network own twice"));
  const test::Outcome none = KitWithModels(folder, "enlarge a.png d.fdib", "nowhere");
  CHECK((none.exitCode == 0 && Contains(none.errors, "norvkit: warning: there are no networks in nowhere, ")));
  REQUIRE(KitIn(folder, "enlarge a.png lanczos.fdib --method lanczos").exitCode == 0);
  CHECK((test::ReadBytes(folder / "d.fdib") == test::ReadBytes(folder / "lanczos.fdib")));
  CHECK(KitWithModels(folder, "models", "nowhere").exitCode == 1);
  const test::Outcome unknown = KitIn(folder, "enlarge a.png e.png --model x2-49");
  CHECK((unknown.exitCode == 1 &&
         Contains(
             unknown.errors,
             "there are x2-24, x2-48, x2-48-best, x2-48-drawn, x2-48-jpeg, x2-48-jpeg-fine, x2-48-wide, x2-8, x4-48")));

  const auto model = [](const char* name, int32_t factor, const char* madeFor, double averaged) {
    return Model{name, name, factor, {madeFor, true, false, {}, averaged}};
  };
  const std::vector<Model> several = {model("good", 2, "photographs", 30), model("better", 2, "photographs", 31),
                                      model("jpeg", 2, "jpeg:30-95", 20), model("lines", 2, "drawings", 10)};
  const auto chosen = [&](const PictureNature& nature) {
    return PlanNetworks(several, NetworkWay::best, nature, 2)->Names();
  };
  CHECK(chosen({}) == "better");
  CHECK(chosen({.jpegQuality = 30}) == "jpeg");
  CHECK(chosen({.jpegQuality = 96}) == "better");
  CHECK(chosen({.drawn = true}) == "lines");
}
