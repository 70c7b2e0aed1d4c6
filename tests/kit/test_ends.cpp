// Runs that end early, from outside: interrupts at any moment, and a standard output that is lost.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <doctest/doctest.h>
#include <filesystem>
#include <random>

#include "support/kit.h"
#include "support/scratch.h"

using namespace norv;
using test::Contains;
using test::KitIn;

namespace {

namespace fs = std::filesystem;

// The name of every file below the folder.
std::vector<std::string> FilesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(folder))
    if (entry.is_regular_file()) names.push_back(fs::relative(entry.path(), folder).string());
  std::sort(names.begin(), names.end());
  return names;
}

test::Command KitCommand(const test::ScratchFolder& folder, const std::string& line) {
  return {.arguments = test::Words(line), .executable = test::NorvkitExecutable(), .directory = folder.Path()};
}

}  // namespace

TEST_CASE("an interrupt at any moment leaves nothing half-written, and ends with 130") {
  const test::ScratchFolder folder;
  REQUIRE(KitIn(folder, "testcard a.png --size 200x150").exitCode == 0);
  REQUIRE(KitIn(folder, "import a.png a.fdib").exitCode == 0);
  REQUIRE(KitIn(folder, "new-net a.net --layout 24").exitCode == 0);
  // What it writes to, and the line.
  const std::pair<const char*, const char*> lines[] = {{"o.png", "testcard o.png --size 600x400"},
                                                       {"o.jpg", "export a.fdib o.jpg"},
                                                       {"o.fdib", "import a.png o.fdib"},
                                                       {"o.png", "shrink a.png o.png --by 1.5"},
                                                       {"o.tif", "enlarge a.png o.tif --by 3 --method cubic"},
                                                       {"o.png", "enlarge a.png o.png --net a.net --average"},
                                                       {"o.jpg", "restore a.png o.jpg"},
                                                       {"o.bit", "denoise a.png o.bit"},
                                                       {"o.png", "noise a.png o.png --bits 16"},
                                                       {"o.net", "new-net o.net --hidden 900,900"},
                                                       {"", "info a.png a.fdib"},
                                                       {"", "compare a.png a.fdib"}};
  std::mt19937 random(7);
  int stopped = 0;
  for (const auto& row : lines) {
    const char *const out = row.first, *const line = row.second;
    CAPTURE(line);
    const auto start = std::chrono::steady_clock::now();
    REQUIRE(test::Run(KitCommand(folder, line)).exitCode == 0);
    const std::chrono::duration<double> whole = std::chrono::steady_clock::now() - start;
    const std::string result = *out ? test::ReadBytes(folder / out) : "";
    if (*out) fs::remove(folder / out);
    const std::vector<std::string> before = FilesIn(folder.Path());
    // A signal may come too late, or on a busy machine before anything has begun: until two have found it at work.
    for (int i = 0, caught = 0; i < 12 && caught < 2; ++i) {
      test::Command command = KitCommand(folder, line);
      command.signal = i % 2 ? SIGTERM : SIGINT;
      command.after = whole.count() * std::uniform_real_distribution<>(0, 0.9)(random);
      const test::Outcome outcome = test::Run(command);
      CAPTURE(outcome.errors);
      if (outcome.exitCode != 0) {
        CHECK(outcome.exitCode == 130);
        CHECK(Contains(outcome.errors, "norvkit: interrupted\n"));
        ++caught;
        ++stopped;
      }
      if (*out && fs::exists(folder / out)) {
        CHECK(test::ReadBytes(folder / out) == result);
        fs::remove(folder / out);
      }
      CHECK(FilesIn(folder.Path()) == before);
    }
  }
  CHECK(stopped > 15);
}

TEST_CASE("a training that is interrupted before it learns leaves nothing behind") {
  const test::ScratchFolder folder;
  fs::create_directory(folder / "pictures");
  for (const char* name : {"pictures/a.png", "pictures/b.png", "pictures/v.png"})
    REQUIRE(KitIn(folder, std::string("testcard ") + name + " --size 500x400").exitCode == 0);
  const std::vector<std::string> before = FilesIn(folder.Path());
  // An emulator loses signals while it begins.
  const double begun = test::EmulatorWords().empty() ? 0 : 2;
  for (const double after : {0.02, 0.1, 0.15, 0.2, 0.25}) {
    test::Command command = KitCommand(folder, "train pictures out --hidden 4 --valid v.png --epochs 100000");
    command.signal = SIGTERM;
    command.after = begun + after;
    const test::Outcome outcome = test::Run(command);
    CAPTURE(outcome.errors);
    CHECK(outcome.exitCode == 130);
    for (const std::string& name : FilesIn(folder.Path()))
      CHECK((std::ranges::find(before, name) != before.end() || name == "out/test.dat" || name == "out/last.net" ||
             name == "out/best.net" || name == "out/log.csv" || name == "out/curve.svg"));
    fs::remove_all(folder / "out");
  }
}

TEST_CASE("what is said and gets lost is a failure, with a word unless the reader has gone") {
  const test::ScratchFolder folder;
  REQUIRE(KitIn(folder, "testcard a.png --size 48x48").exitCode == 0);
  for (const char* line : {"--help", "--version", "enlarge --help", "info a.png", "compare a.png a.png", "models"}) {
    CAPTURE(line);
    test::Command command = KitCommand(folder, line);
    command.output = "/dev/full";
    const test::Outcome full = test::Run(command);
    CHECK(full.exitCode == 1);
    CHECK(Contains(full.errors, "norvkit: standard output: No space left"));
    command.output.clear();
    command.closed.push_back('1');
    CHECK(test::Run(command).exitCode == 1);
  }
  // What says nothing loses nothing.
  test::Command quiet = KitCommand(folder, "shrink a.png b.png");
  quiet.output = "/dev/full";
  CHECK(test::Run(quiet).exitCode == 0);
  const test::Outcome gone = test::Shell(
      folder, "for i in 1 2 3 4 5 6 7 8; do w=\"$w $PWD/a.png\"; done; $k info $w | true; echo ${PIPESTATUS[0]}");
  CHECK((gone.output == "1\n" && gone.errors.empty()));
}
