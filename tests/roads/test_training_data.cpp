// Modes 11 and 12 as the graphical program runs them.
#ifndef _WIN32

#include <doctest/doctest.h>
#include <fcntl.h>
#include <fstream>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "support/messages.h"
#include "support/process.h"
#include "support/samples.h"
#include "support/scratch.h"
#include "train/training_pairs.h"

using namespace norv;
using namespace norv::test;

namespace {

Outcome RunIn(const ScratchFolder& folder, const std::vector<std::string>& arguments) {
  return Run({.arguments = arguments, .environment = {"NORV_DIR=" + folder.Path()}, .input = "kkk"});
}

bool Exists(const std::string& path) { return std::filesystem::exists(path); }

}  // namespace

TEST_CASE("mode 12: the first shuffle of every run gives the same order") {
  const ScratchFolder folder;
  const TrainingSet set = MakeSamples(3000, 8, 4);
  WriteBytes(folder / "test.dat", FileBytes(set));
  const Outcome outcome = RunIn(folder, {"12"});
  CHECK(outcome.exitCode == 0);
  CHECK(outcome.errors == "");
  CHECK(IsReported(outcome.output, "\nMode = 12\nShuffling Data"));
  RandomGenerator generator;
  CHECK(ReadBytes(folder / "test.dat") == FileBytes(Shuffled(set, generator)));
}

TEST_CASE("mode 12: a file that cannot be shuffled is a message, a key and exit code 0") {
  const ScratchFolder folder;
  const std::string expected = kBanner + "\nMode = 12\nShuffling Data\nPROBLEM OPENING FILE!";
  Outcome outcome = RunIn(folder, {"12"});
  CHECK(outcome.exitCode == 0);
  CHECK(outcome.output == expected);
  const std::string damaged = FileBytes(MakeSamples(10, 8, 4)).substr(0, 200);
  WriteBytes(folder / "test.dat", damaged);
  outcome = RunIn(folder, {"12"});
  CHECK(outcome.output == expected);
  CHECK(outcome.errors.find("fewer records") != std::string::npos);
  CHECK(ReadBytes(folder / "test.dat") == damaged);
}

TEST_CASE("mode 11: the first picture makes the set, the others are added with the sizes of the file") {
  const ScratchFolder folder;
  matrix first = MakePicture(41, 38, 1), second = MakePicture(30, 30, 2);
  first.save(folder / "standard.mat", Folder::asGiven);
  Outcome outcome = RunIn(folder, {"11", "0", "2", "24", "4", "-1"});
  CHECK(outcome.errors == "");
  CHECK(IsReported(outcome.output, "\nMode = 11\n1 of 2\nShrinkOrder = -1"));
  CHECK_FALSE(Exists(folder / "standard.mat"));
  TrainingSet expected;
  BuildTrainingPairs(expected, first, 24, 4, -1);
  CHECK(ReadBytes(folder / "test.dat") == FileBytes(expected));
  const std::string before = FileBytes(expected);
  // Index 0 with no size appends too.
  for (const char* index : {"1", "0"}) {
    second.save(folder / "standard.mat", Folder::asGiven);
    outcome = RunIn(folder, {"11", index, "2", index[0] == '0' ? "0" : "8", "16", "3"});
    CHECK(IsReported(outcome.output,
                     std::string("\nMode = 11\n") + (index[0] == '0' ? "1" : "2") + " of 2\nShrinkOrder = 3"));
  }
  BuildTrainingPairs(expected, second, 24, 4, 3);
  const std::string added = FileBytes(expected).substr(12), all = ReadBytes(folder / "test.dat");
  CHECK(all.substr(12) == before.substr(12) + added + added);
  const int32_t count = 15 * 20 * 0 + static_cast<int32_t>((before.size() - 12 + 2 * added.size()) / 112);
  CHECK(all.substr(0, 4) == BytesOf(&count, 1));
}

TEST_CASE("mode 11: every failure is a message, a key and exit code 0; pictures and sets stay") {
  const ScratchFolder folder;
  const std::string start = kBanner + "\nMode = 11\n1 of 1\nShrinkOrder = ";
  CHECK(RunIn(folder, {"11", "0", "1", "8", "4", "0"}).output == start + "0\nPROBLEM OPENING FILE!");
  MakePicture(20, 20, 1).save(folder / "standard.mat", Folder::asGiven);
  // No set to add to, an unknown filter, unknown sizes.
  CHECK(RunIn(folder, {"11", "0", "1", "0", "4", "0"}).output == start + "0\nPROBLEM OPENING FILE!");
  CHECK(RunIn(folder, {"11", "0", "1", "8", "4", "-7"}).output == start + "-7\nThe shrink order has no filter.");
  CHECK(RunIn(folder, {"11", "0", "1", "7", "4", "0"}).exitCode == 0);
  CHECK_FALSE(Exists(folder / "test.dat"));
  CHECK(Exists(folder / "standard.mat"));
  // A full disk.
  std::filesystem::create_symlink("/dev/full", folder / "test.dat");
  const Outcome outcome = RunIn(folder, {"11", "0", "1", "8", "4", "0"});
  CHECK(outcome.output == start + "0\nPROBLEM OPENING FILE!");
  CHECK(outcome.errors.find("cannot write") != std::string::npos);
  CHECK(Exists(folder / "standard.mat"));
}

TEST_CASE("modes 11 and 12 wait for each other, so that no pair lands in a file just replaced") {
  const ScratchFolder folder;
  const TrainingSet set = MakeSamples(100, 8, 4);
  WriteBytes(folder / "test.dat", FileBytes(set));
  MakePicture(20, 20, 1).save(folder / "standard.mat", Folder::asGiven);
  const int descriptor = open((folder / "test.dat").c_str(), O_RDONLY | O_CLOEXEC);
  REQUIRE(flock(descriptor, LOCK_EX) == 0);
  Outcome outcome;
  std::thread run([&] { outcome = RunIn(folder, {"11", "1", "2", "0", "0", "0"}); });
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  CHECK(Exists(folder / "standard.mat"));
  // Replaced by another run meanwhile: the pairs must go to the new file.
  WriteBytes(folder / "new", FileBytes(MakeSamples(50, 8, 4)));
  std::filesystem::rename(folder / "new", folder / "test.dat");
  close(descriptor);
  run.join();
  CHECK(outcome.exitCode == 0);
  const int32_t count = 50 + 4 * 4 * 8;
  CHECK(ReadBytes(folder / "test.dat").substr(0, 4) == BytesOf(&count, 1));
}

#endif
