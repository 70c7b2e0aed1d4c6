// The companion as people run it: commands, their files, reasons and exit codes.
#include <algorithm>
#include <doctest/doctest.h>
#include <filesystem>
#include <regex>

#include "image/bit_image.h"
#include "kit/commands/command.h"
#include "kit/failure.h"
#include "kit/measure/quality.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"
#include "kit/scale/enlarge_picture.h"
#include "kit/scale/interpolation.h"
#include "kit/scale/scale.h"
#include "net/net_file.h"
#include "support/kit.h"
#include "support/scratch.h"

using namespace norv;
using test::Contains;
using test::Kit;
using test::KitIn;

namespace {

// A picture of gentle colours whose planes differ, alpha included.
Picture Sample(int32_t width, int32_t height, int32_t channels) {
  Picture picture(width, height, channels);
  for (int32_t k = 0; k < channels; ++k)
    for (int32_t r = 0; r < height; ++r)
      for (int32_t x = 0; x < width; ++x) picture.plane[k].z[r][x] = static_cast<float>((7 * x + 5 * r + 40 * k) % 256);
  return picture;
}

void Keep(const std::string& path, const Picture& picture, int32_t bits) {
  WriteChoice choice;
  choice.bits = bits;
  WritePicture(path, picture, choice);
}

// Without the times.
std::string WhatIsSaid(const std::string& output) {
  return std::regex_replace(output,
                            std::regex("\"seconds[a-z_]*\": *[0-9.e-]+|[0-9]+ samples/s|samples_per_second[^,]*"), "");
}

}  // namespace

TEST_CASE("every command explains itself with an example") {
  const test::Outcome whole = Kit({"--help"});
  CHECK(whole.exitCode == 0);
  for (const CommandRow& row : CommandTable()) {
    const Command command = row.make();
    const std::string name = command.name;
    CAPTURE(name);
    CHECK(Contains(whole.output, "\n  " + name + " ") == (*row.heading != 0));
    const test::Outcome one = Kit({name, "--help"});
    CHECK(one.exitCode == 0);
    CHECK(Contains(one.output, "Example:\n  norvkit " + name));
    for (const Option& option : command.options) CHECK(Contains(one.output, std::string("\n  ") + option.name + " "));
    CHECK(one.errors.empty());
  }
}

TEST_CASE("every command makes the same by any number of threads, of one row too") {
  test::ScratchFolder folder;
  CHECK(KitIn(folder, "new-net n.net --inputs 24 --hidden 5").exitCode == 0);
  Keep(folder / "card.png", Sample(70, 90, 4), 16);
  Keep(folder / "row.png", Sample(70, 1, 3), 8);
  std::filesystem::create_directory(folder / "many");
  for (const char* name : {"a", "b", "c"}) Keep(folder / (std::string("many/") + name + ".png"), Sample(64, 65, 1), 8);
  const char* const lines[] = {"enlarge IN out.png --net n.net --average",
                               "enlarge IN out.tif --by 1.5 --method lanczos",
                               "enlarge IN out.bmp --method cubic --denoise",
                               "enlarge IN out.png --net n.net --method both",
                               "shrink IN out.png --longest 40",
                               "denoise IN out.png --noise 9",
                               "denoise IN out.png --noise 9 --best",
                               "convert IN out.jpg",
                               "noise IN out.png",
                               "import IN out.fdib",
                               "export IN out.ppm --overwrite",
                               "testcard out.png --size 90x70",
                               "compare IN IN --map out.png --border 0",
                               "filter card.png",
                               "rank many --side 64 --json",
                               "train many out --epochs 1 --inputs 8 --hidden 3 --valid 1"};
  for (const std::string line : lines)
    for (const std::string in : {"card.png", "row.png"}) {
      if (in == "row.png" && !Contains(line, "IN")) continue;
      std::string words = line;
      for (size_t at; (at = words.find("IN ")) != std::string::npos;) words.replace(at, 2, in);
      std::string one;
      for (const std::string threads : {"1", "2", "3", "16"}) {
        std::filesystem::remove_all(folder / "out");
        const test::Outcome outcome = KitIn(folder, words + " --quiet --threads " + threads);
        INFO(words, " --threads ", threads, ": ", outcome.errors);
        CHECK(outcome.exitCode == 0);
        std::string made = WhatIsSaid(outcome.output);
        for (const char* end : {".png", ".tif", ".bmp", ".jpg", ".fdib", ".ppm", "/test.dat", "/last.net"})
          if (const std::string path = folder / (std::string("out") + end); std::filesystem::exists(path))
            made += test::ReadBytes(path);
        CHECK(made.size() > 100);
        if (one.empty()) one = made;
        CHECK(made == one);
        for (const char* end : {".png", ".tif", ".bmp", ".jpg", ".fdib", ".ppm"})
          std::filesystem::remove(folder / (std::string("out") + end));
      }
    }
}

TEST_CASE("a wrong command line ends with 2, what cannot be done with 1") {
  test::ScratchFolder folder;
  Keep(folder / "a.png", Sample(8, 8, 3), 8);
  Keep(folder / "b.png", Sample(8, 9, 3), 8);
  test::WriteBytes(folder / "text.png", "no picture");
  const std::vector<const char*> lines[] = {
      {"import missing.png out.fdib", "import text.png out.fdib", "import a.png no-folder/out.fdib",
       "export a.png no-folder/out.png", "export a.png out.jpg --bits 16", "import a.png out.png",
       "export a.png out.mat", "new-net out.net --layout 8 --start lanczos", "compare a.png b.png",
       "compare a.png a.png", "shrink a.png out.png --order -7", "shrink a.png out.png --factor 9", "info text.png"},
      {"", "no-such-command", "shrink a.png", "export a.png out.png --bits 12", "new-net out.net --layout 50",
       "new-net out.net --hidden 4,x", "testcard out.png --size 100", "shrink a.png out.png --factor 1",
       "compare a.png a.png --border -1", "testcard out.jpg --compression 4", "testcard out.fdib --compression 4",
       "new-net out.net --start cubic --seed 7", "export a.png out.png --quality 50",
       "shrink a.png out.fdib --quality 50"}};
  for (const int code : {1, 2})
    for (const char* line : lines[code - 1]) {
      const test::Outcome outcome = KitIn(folder, line);
      CAPTURE(outcome.errors);
      CHECK(outcome.exitCode == code);
      CHECK(outcome.errors.starts_with("norvkit: "));
      CHECK((outcome.errors != "" && outcome.output == ""));
    }
  for (const char* name : {"out.png", "out.fdib", "out.jpg", "out.net", "out.mat"})
    CHECK(test::ReadBytes(folder / name).empty());
}

TEST_CASE("pictures go into our files and come back") {
  test::ScratchFolder folder;
  Picture sample = Sample(13, 9, 4);
  sample.plane[1].z[2][3] = 100.0f + 37.0f / 257;
  Keep(folder / "a.png", sample, 16);
  CHECK(KitIn(folder, "import a.png a.fdib").exitCode == 0);
  const FloatImage image = LoadFloatImage(folder / "a.fdib");
  CHECK(image.format == 0x2007);
  CHECK(image.plane[1].z[2][3] == doctest::Approx(100.0 + 37.0 / 257).epsilon(1e-7));
  CHECK(image.plane[3].z[2][3] == sample.plane[3].z[2][3]);
  CHECK(KitIn(folder, "export a.fdib b.png --bits 16").exitCode == 0);
  CHECK(test::ReadBytes(folder / "a.png") == test::ReadBytes(folder / "b.png"));

  CHECK(KitIn(folder, "import a.png a.mat").exitCode == 0);
  matrix luminance;
  luminance.load(folder / "a.mat", false, Folder::asGiven);
  CHECK(luminance.z[4][6] == doctest::Approx(0.299 * sample.plane[0].z[4][6] + 0.587 * sample.plane[1].z[4][6] +
                                             0.114 * sample.plane[2].z[4][6]));
  CHECK(KitIn(folder, "export a.mat grey.png").exitCode == 0);
  CHECK(ReadPicture(folder / "grey.png").channels == 1);

  CHECK(KitIn(folder, "import a.png a.bit").exitCode == 0);
  BitImage bytes;
  bytes.Load(folder / "a.bit", Folder::asGiven);
  CHECK(bytes.rows[4][3 * 6 + 2] == sample.plane[0].z[4][6]);
  CHECK(bytes.rows[4][3 * 6] == sample.plane[2].z[4][6]);
  CHECK(KitIn(folder, "export a.bit c.png").exitCode == 0);
  CHECK(ReadPicture(folder / "c.png").plane[2].z[8][12] == sample.plane[2].z[8][12]);
}

TEST_CASE("a grey picture fills three planes, and any colour model is exported as display colours") {
  test::ScratchFolder folder;
  Keep(folder / "grey.png", Sample(6, 5, 1), 8);
  CHECK(KitIn(folder, "import grey.png grey.fdib").exitCode == 0);
  FloatImage image = LoadFloatImage(folder / "grey.fdib");
  CHECK(image.format == kDefaultFormat);
  for (int k = 1; k < 3; ++k) CHECK(image.plane[k].z[3][4] == image.plane[0].z[3][4]);
  image.ConvertTo(kLuminance);
  SaveFloatImage(folder / "y.fdib", image);
  CHECK(KitIn(folder, "export y.fdib shown.png").exitCode == 0);
  CHECK(ReadPicture(folder / "shown.png").plane[2].z[3][4] == image.plane[0].z[3][4]);
}

TEST_CASE("values outside 0..255 are clamped, which is said when asked for") {
  test::ScratchFolder folder;
  matrix plane(3, 2);
  for (int32_t i = 0; i < 6; ++i) plane.x[i] = static_cast<float>(100 * i - 100);
  plane.save(folder / "a.mat", Folder::asGiven);
  const test::Outcome quiet = KitIn(folder, "export a.mat a.png");
  CHECK(quiet.errors.empty());
  CHECK(ReadPicture(folder / "a.png").plane[0].x[0] == 0);
  CHECK(ReadPicture(folder / "a.png").plane[0].x[5] == 255);
  CHECK(Contains(KitIn(folder, "export a.mat a.png --verbose --overwrite").errors, "3 samples"));
}

TEST_CASE("files are known by extension or by what they hold, and truncated ones are named as such") {
  test::ScratchFolder folder;
  NeuralNet net;
  BuildNet(net, 3, {2, 1});
  SaveNet(net, folder / "a.net", Folder::asGiven);
  FloatImage image(5, 4, kDefaultFormat);
  image.mask.Resize(5, 4);
  SaveFloatImage(folder / "a.fdib", image);
  matrix plane(5, 4);
  plane.fill(2);
  plane.save(folder / "a.mat", Folder::asGiven);
  BitImage(5, 4).Save(folder / "a.bit", Folder::asGiven);
  test::WriteBytes(folder / "a.dat", std::string("\2\0\0\0\3\0\0\0\4\0\0\0", 12) + std::string(2 * 7 * 4, '\0'));
  const std::pair<const char*, const char*> kinds[] = {
      {"net", "network"}, {"fdib", "float image"}, {"mat", "matrix"}, {"bit", "bit image"}, {"dat", "training set"}};
  for (const auto& [extension, kind] : kinds) {
    CAPTURE(extension);
    const std::string name = std::string("a.") + extension, bytes = test::ReadBytes(folder / name);
    test::WriteBytes(folder / "nameless", bytes);
    for (const std::string& whole : {name, std::string("nameless")})
      CHECK(Contains(KitIn(folder, "info " + whole).output, std::string(": ") + kind));
    test::WriteBytes(folder / name, bytes.substr(0, bytes.size() - 1));
    const test::Outcome cut = KitIn(folder, "info " + name);
    CHECK(cut.exitCode == 1);
    CHECK(Contains(cut.errors, "ends early"));
  }
}

TEST_CASE("a network enlarges grey pictures and alpha planes like any plane") {
  test::ScratchFolder folder;
  Keep(folder / "ga.png", Sample(12, 10, 2), 8);
  Keep(folder / "rgba.png", Sample(12, 10, 4), 8);
  CHECK(KitIn(folder, "new-net c.net --layout 24 --start cubic").exitCode == 0);
  for (const char* name : {"ga.png", "rgba.png"}) {
    CHECK(KitIn(folder, std::string("enlarge ") + name + " net.tif --overwrite --net c.net").exitCode == 0);
    CHECK(KitIn(folder, std::string("enlarge ") + name + " cubic.tif --overwrite --method cubic").exitCode == 0);
    const Picture net = ReadPicture(folder / "net.tif"), cubic = ReadPicture(folder / "cubic.tif");
    CHECK(net.channels == cubic.channels);
    for (int32_t k = 0; k < cubic.channels; ++k)
      CHECK(Psnr(WithoutBorder(net.plane[k], 5), WithoutBorder(cubic.plane[k], 5)) > 56);
  }
  const test::Outcome other = KitIn(folder, "enlarge ga.png o.png --net c.net --factor 3");
  CHECK(other.exitCode == 1);
  CHECK(Contains(other.errors, "c.net enlarges twice: leave out --net, or --by 2"));
}

TEST_CASE("comparing says identical, or how far apart") {
  test::ScratchFolder folder;
  Picture a = Sample(30, 30, 3);
  Keep(folder / "a.png", a, 8);
  for (int k = 0; k < 3; ++k)
    for (int32_t i = 0; i < a.plane[k].mn; ++i) a.plane[k].x[i] += a.plane[k].x[i] < 128 ? 1.0f : -1.0f;
  a.plane[0].z[0][0] = 255;  // in the border
  Keep(folder / "b.png", a, 8);
  const test::Outcome same = KitIn(folder, "compare a.png a.png");
  CHECK(Contains(same.output, "luminance   PSNR identical  SSIM 1.0000"));
  const test::Outcome apart = KitIn(folder, "compare a.png b.png");
  CHECK(Contains(apart.output, "red         PSNR  48.13 dB"));
  CHECK(apart.exitCode == 0);
  Picture green = Sample(30, 30, 3);
  Keep(folder / "e.png", green, 8);
  for (int32_t i = 0; i < green.plane[1].mn; ++i) green.plane[1].x[i] += green.plane[1].x[i] < 128 ? 2.0f : -2.0f;
  Keep(folder / "f.png", green, 8);
  // Four thirds of the squares of differences of 1.
  CHECK(Contains(KitIn(folder, "compare e.png f.png").output, "colour      PSNR  46.88 dB"));
  // Every channel off by one the same way: the studio luminance by 219 / 255.
  Picture grey = Sample(30, 30, 1);
  grey.plane[0].fill(100);
  Keep(folder / "c.png", grey, 8);
  grey.plane[0].addscalar(1);
  Keep(folder / "d.png", grey, 8);
  CHECK(Contains(KitIn(folder, "compare c.png d.png").output, "studio Y    PSNR  49.45 dB"));
  CHECK(!Contains(KitIn(folder, "compare a.png b.png --border 0").output, "red         PSNR  48.13 dB"));
  // Cropped as shrink does it: what is left of the larger one is the same picture.
  for (int k = 0; k < 3; ++k) {
    matrix part(28, 29);
    for (int32_t y = 0; y < 29; ++y) std::copy_n(a.plane[k].z[y], 28, part.z[y]);
    a.plane[k].swap(part);
  }
  Keep(folder / "cropped.png", a, 8);
  CHECK(KitIn(folder, "compare b.png cropped.png").exitCode == 1);
  CHECK(Contains(KitIn(folder, "compare b.png cropped.png --border 0 --crop").output, "luminance   PSNR identical"));
}

TEST_CASE("a picture made smaller and larger again is the same size and alike") {
  test::ScratchFolder folder;
  CHECK(KitIn(folder, "testcard card.png --size 121x97").exitCode == 0);
  CHECK(KitIn(folder, "shrink card.png small.png --bits 16").exitCode == 0);
  CHECK(KitIn(folder, "new-net l.net --start lanczos").exitCode == 0);
  const Picture card = ReadPicture(folder / "card.png"), small = ReadPicture(folder / "small.png");
  CHECK((small.Width() == 60 && small.Height() == 48 && small.bits == 16));
  const char* const ways[] = {"--method nearest", "--method cubic", "--method lanczos", "--net l.net",
                              "--net l.net --average --shortcut --threads 8"};
  std::vector<Picture> results;
  for (const char* way : ways) {
    const test::Outcome outcome = KitIn(folder, std::string("enlarge small.png large.png --overwrite ") + way);
    CAPTURE(outcome.errors);
    CHECK(outcome.exitCode == 0);
    results.push_back(ReadPicture(folder / "large.png"));
    CHECK((results.back().Width() == 120 && results.back().Height() == 96 && results.back().bits == 16));
  }
  // The network that holds the interpolation, in every form, against the interpolation itself; chroma of the shortcut
  // differs by its own rounding only.
  for (const size_t i : {3, 4})
    CHECK(Psnr(WithoutBorder(results[2].plane[1], 8), WithoutBorder(results[i].plane[1], 8)) > 90);
  CHECK(Psnr(WithoutBorder(results[2].plane[1], 8), WithoutBorder(results[0].plane[1], 8)) < 40);
  for (int32_t i = 0; i < results[0].plane[0].mn; ++i)
    CHECK(results[0].plane[0].x[i] == small.plane[0].z[i / 240][i % 120 / 2]);
}
