// Ways of enlarging, ranked on somebody's own pictures, and those that are kept.
#include <doctest/doctest.h>
#include <filesystem>
#include <fstream>

#include "kit/pictures/image_file.h"
#include "kit/search/dead_leaves.h"
#include "support/kit.h"
#include "support/test.h"

using namespace norv;

namespace {

// A run with a configuration folder of its own, and no networks but the shipped ones.
test::Outcome WithConfig(const test::ScratchFolder& folder, const std::string& line) {
  return test::Run({.arguments = test::Words(line),
                    .environment = {"XDG_CONFIG_HOME=" + folder.Path() + "/config"},
                    .executable = test::NorvkitExecutable(),
                    .directory = folder.Path()});
}

bool Says(const std::string& text, const std::string& what) { return text.find(what) != std::string::npos; }

void Write(const std::string& path, const std::string& text) { std::ofstream(path) << text; }

}  // namespace

TEST_CASE("rank tries every way, keeps the best, and enlarge takes it by name") {
  test::ScratchFolder folder;
  std::filesystem::create_directory(folder / "mine");
  for (const char* name : {"mine/a.png", "mine/b.png"})
    SaveImage(folder / name, GreyPicture(test::DeadLeaves(150, 133, static_cast<unsigned>(name[5]))), {});
  SaveImage(folder / "mine/tiny.png", GreyPicture(test::DeadLeaves(20, 20, 1)), {});
  Write(folder / "mine/c.png", "no picture");
  const test::Outcome ranked = WithConfig(folder, "rank mine --side 96 --keep best_1");
  CAPTURE(ranked.errors);
  REQUIRE(ranked.exitCode == 0);
  for (const char* way : {"nearest", "cubic", "lanczos", "restore, restored as clean", "restore, restored as drawn"})
    CHECK(Says(ranked.output, std::string("  ") + way + "\n"));
  CHECK(Says(ranked.errors, "tiny.png"));
  CHECK(Says(ranked.errors, "c.png"));
  CHECK(Says(ranked.errors, "on 2 pictures"));
  // Best first, and nobody is surprised by which ways are poor.
  double last = 1e9;
  std::stringstream table(ranked.output);
  std::string line, worst;
  std::getline(table, line);
  while (std::getline(table, line)) {
    const double decibels = std::stod(line);
    CHECK(decibels <= last);
    last = decibels;
    worst = line;
  }
  CHECK(Says(worst, "nearest"));
  // The kept way is the one that was said: the same bytes by name and by options.
  const size_t options = ranked.errors.find("--by 2 ");
  REQUIRE(options != std::string::npos);
  const std::string said = ranked.errors.substr(options, ranked.errors.find('\n', options) - options);
  CHECK(WithConfig(folder, "enlarge mine/a.png named.ppm --preset best_1").exitCode == 0);
  CHECK(WithConfig(folder, "enlarge mine/a.png said.ppm " + said).exitCode == 0);
  CHECK((test::ReadBytes(folder / "named.ppm") == test::ReadBytes(folder / "said.ppm")));
  CHECK(WithConfig(folder, "rank mine --side 96 --keep best_1").exitCode == 1);  // there already
}

TEST_CASE("presets of people's own are refused in words where they cannot be meant") {
  test::ScratchFolder folder;
  std::filesystem::create_directories(folder / "config/norv/presets");
  SaveImage(folder / "a.png", GreyPicture(test::DeadLeaves(40, 40, 3)), {});
  const auto keep = [&](const std::string& text) { Write(folder / "config/norv/presets/mine.txt", text); };
  keep("# by hand\nmethod = restore\npreset = drawn\n");
  CHECK(WithConfig(folder, "restore a.png r.ppm --preset mine").exitCode == 0);
  CHECK(WithConfig(folder, "restore a.png d.ppm --preset drawn").exitCode == 0);
  CHECK((test::ReadBytes(folder / "r.ppm") == test::ReadBytes(folder / "d.ppm")));
  CHECK(WithConfig(folder, "enlarge a.png e.ppm --preset mine --by 3").exitCode == 0);
  CHECK(LoadImage(folder / "e.ppm").Width() == 120);
  CHECK(WithConfig(folder, "enlarge a.png no.ppm --preset mine --method net").exitCode == 2);
  for (const char* command : {"enlarge", "restore"}) {
    const test::Outcome unknown = WithConfig(folder, std::string(command) + " a.png no.ppm --preset yours");
    CHECK(unknown.exitCode == 2);
    CHECK(Says(unknown.errors, "clean, compressed, noisy, drawn, mine"));
  }
  keep("method = lanczos\n");
  CHECK(WithConfig(folder, "enlarge a.png l.ppm --preset mine").exitCode == 0);
  CHECK(WithConfig(folder, "restore a.png no.ppm --preset mine").exitCode == 2);
  for (const char* damaged :
       {"", "method = magic\n", "method = both\n", "method = lanczos\npreset = clean\n",
        "method = lanczos\nmethod = cubic\n", "method lanczos\n", "method = net\nmodel = x\nquick = 7\n"}) {
    keep(damaged);
    const test::Outcome refused = WithConfig(folder, "enlarge a.png no.ppm --preset mine");
    CAPTURE(std::string(damaged));
    CHECK(refused.exitCode == 1);
    CHECK(Says(refused.errors, "mine.txt is damaged"));
  }
  CHECK_FALSE(std::filesystem::exists(folder / "no.ppm"));
  for (const char* name : {"clean", "../up", "a.b", "with/slash"})
    CHECK(WithConfig(folder, std::string("rank . --keep ") + name).exitCode == 2);
  CHECK(WithConfig(folder, "rank missing").exitCode == 1);
  CHECK(WithConfig(folder, "rank config").exitCode == 1);  // no pictures
  CHECK(WithConfig(folder, "rank . --by 5").exitCode == 2);
}
