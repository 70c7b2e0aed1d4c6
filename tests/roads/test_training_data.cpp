// Modes 11 and 12 as the graphical program runs them.
#include <fcntl.h>
#include <sys/file.h>

#include "support/process.h"
#include "support/samples.h"
#include "support/test.h"
#include "train/training_pairs.h"

TEST_CASE("mode 12: the first shuffle of every run gives the same order; a failure is a message, a key, exit code 0") {
  const ScratchFolder folder;
  const std::string data = folder / "test.dat", start = "\nMode = 12\nShuffling Data";
  const TrainingSet set = MakeSamples(3000, 8, 4);
  WriteBytes(data, FileBytes(set));
  CheckReported(RunIn(folder, "12"), start);
  RandomGenerator generator;
  CHECK(ReadBytes(data) == FileBytes(Shuffled(set, generator)));

  const std::string damaged = FileBytes(set).substr(0, 200);
  WriteBytes(data, damaged);
  const Outcome refused = RunIn(folder, "12");
  CHECK(Contains(refused.errors, "fewer records"));
  CHECK(ReadBytes(data) == damaged);
  fs::remove(data);
  for (const Outcome& outcome : {refused, RunIn(folder, "12")}) {
    CHECK(outcome.exitCode == 0);
    CHECK(outcome.output == kBanner + start + "\nPROBLEM OPENING FILE!");
  }
}

TEST_CASE("mode 11: the first picture makes the set, the others are added with the sizes of the file") {
  const ScratchFolder folder;
  matrix first = RandomPlane(41, 38, 1), second = RandomPlane(30, 30, 2);
  TrainingSet expected;
  BuildTrainingPairs(expected, first, 24, 4, -1);
  std::string records = FileBytes(expected).substr(12);
  first = RandomPlane(41, 38, 1);
  const auto check = [&](matrix& picture, const std::string& line, const std::string& said) {
    picture.save(folder / "standard.mat", Folder::asGiven);
    CheckReported(RunIn(folder, line), "\nMode = 11\n" + said);
    CHECK_FALSE(fs::exists(folder / "standard.mat"));
    CHECK(ReadBytes(folder / "test.dat") == Int32Bytes({static_cast<int32_t>(records.size() / 112), 24, 4}) + records);
  };
  check(first, "11 0 2 24 4 -1", "1 of 2\nShrinkOrder = -1");
  BuildTrainingPairs(expected, second, 24, 4, 3);
  records += FileBytes(expected).substr(12);
  check(second, "11 1 2 8 16 3", "2 of 2\nShrinkOrder = 3");
  records += FileBytes(expected).substr(12);
  check(second, "11 0 2 0 16 3", "1 of 2\nShrinkOrder = 3");  // index 0 with no size appends too
}

TEST_CASE("mode 11: every failure is a message, a key and exit code 0; pictures and sets stay") {
  const ScratchFolder folder;
  const auto refused = [&](const std::string& sizes, const std::string& said) {
    const Outcome outcome = RunIn(folder, "11 0 1 " + sizes);
    CHECK(outcome.exitCode == 0);
    CHECK(outcome.output.rfind(kBanner + "\nMode = 11\n1 of 1\nShrinkOrder = " + said, 0) == 0);
    CHECK_FALSE(Contains(outcome.output, "Done"));
    return outcome.errors;
  };
  refused("8 4 0", "0\nPROBLEM OPENING FILE!");
  RandomPlane(20, 20, 1).save(folder / "standard.mat", Folder::asGiven);
  refused("0 4 0", "0\nPROBLEM OPENING FILE!");  // no set to add to
  refused("8 4 -7", "-7\nThe shrink order has no filter.");
  CHECK_FALSE(fs::exists(folder / "test.dat"));
  fs::create_symlink("/dev/full", folder / "test.dat");
  CHECK(Contains(refused("8 4 0", "0\nPROBLEM OPENING FILE!"), "cannot write"));
  CHECK(fs::exists(folder / "standard.mat"));
}

TEST_CASE("modes 11 and 12 wait for each other, so that no pair lands in a file just replaced") {
  const ScratchFolder folder;
  WriteBytes(folder / "test.dat", FileBytes(MakeSamples(100, 8, 4)));
  RandomPlane(20, 20, 1).save(folder / "standard.mat", Folder::asGiven);
  const int descriptor = open((folder / "test.dat").c_str(), O_RDONLY | O_CLOEXEC);
  REQUIRE(flock(descriptor, LOCK_EX) == 0);
  Outcome outcome;
  std::thread run([&] { outcome = RunIn(folder, "11 1 2 0 0 0"); });
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  CHECK(fs::exists(folder / "standard.mat"));
  // Replaced by another run meanwhile: the pairs must go to the new file.
  WriteBytes(folder / "new", FileBytes(MakeSamples(50, 8, 4)));
  fs::rename(folder / "new", folder / "test.dat");
  close(descriptor);
  run.join();
  CHECK(outcome.exitCode == 0);
  CHECK(ReadBytes(folder / "test.dat").substr(0, 4) == Int32Bytes({50 + 4 * 4 * 8}));
}
