#include "support/samples.h"
#include "support/test.h"
#include "train/training_set.h"

namespace {

std::vector<std::string> SortedRecords(const std::string& file, size_t recordBytes) {
  std::vector<std::string> records;
  for (size_t i = 12; i < file.size(); i += recordBytes) records.push_back(file.substr(i, recordBytes));
  std::sort(records.begin(), records.end());
  return records;
}

}  // namespace

TEST_CASE("training set: its file is the counts and the records, read or mapped; what follows is nobody's business") {
  const ScratchFolder folder;
  const TrainingSet set = MakeSamples(7, 8, 4);
  SaveTrainingSet(set, folder / "set", Folder::asGiven);
  CHECK(ReadBytes(folder / "set") == FileBytes(set));
  WriteBytes(folder / "set", FileBytes(set) + "left by an append that was interrupted");
  for (const int64_t memory : {int64_t{1} << 30, int64_t{0}}) {
    TrainingSet read = MakeSamples(3, 2, 1);
    LoadTrainingSet(read, folder / "set", Folder::asGiven, memory);
    CHECK(FileBytes(read) == FileBytes(set));
    CHECK((read.file != nullptr) == (memory == 0));
    CHECK(read.Target(6)[3] == set.block[7 * 12 - 1]);
  }
  ShuffleTrainingFile(folder / "set");
  CHECK(ReadBytes(folder / "set").size() == FileBytes(set).size());
}

TEST_CASE("training set: the same sizes keep the values, others do not; what memory cannot hold has its message") {
  TrainingSet set = MakeSamples(3, 8, 4);
  const std::string before = FileBytes(set);
  CreateTrainingSet(set, 3, 8, 4);
  CHECK(FileBytes(set) == before);
  CreateTrainingSet(set, 2, 8, 16);
  CHECK(set.RecordFloats() == 24);
  CHECK_THROWS_WITH_AS(CreateTrainingSet(set, 2000000000, 2000000000, 4),
                       doctest::Contains("Out of memory!\n\nFailed to allocate 16000000032000.00 MB"), const char*);
  CHECK(set.N == 0);
  const ScratchFolder folder;
  SaveTrainingSet(set, folder / "empty", Folder::asGiven);
  CHECK(ReadBytes(folder / "empty").size() == 12);
  LoadTrainingSetShuffled(set, folder / "empty", Folder::asGiven);
  CHECK(set.N == 0);
}

TEST_CASE("shuffling: every road gives a new order of the very records") {
  const ScratchFolder folder;
  const std::string path = folder / "set", original = FileBytes(MakeSamples(5000, 8, 4));
  std::string previous = original;
  const auto check = [&](const std::string& before, const auto& shuffle) {
    WriteBytes(path, before);
    shuffle();
    const std::string after = ReadBytes(path);
    CHECK((after != before && after != previous));
    CHECK(after.substr(0, 12) == before.substr(0, 12));
    CHECK(SortedRecords(after, 48) == SortedRecords(before, 48));
    previous = after;
  };
  check(original, [&] { ShuffleTrainingFile(path, Durability::scratch, int64_t{1} << 30); });  // mapped
  check(original, [&] { ShuffleTrainingFile(path, Durability::scratch, 60000); });             // in eight parts
  check(FileBytes(MakeSamples(50, 8, 4)), [&] { ShuffleTrainingFile(path, Durability::scratch, 1); });
  check(original, [&] {
    TrainingSet set;
    LoadTrainingSetShuffled(set, path, Folder::asGiven);
    SaveTrainingSet(set, path, Folder::asGiven);
  });
}

TEST_CASE("training set: damaged files are refused, the set is empty and the file untouched") {
  const ScratchFolder folder;
  const std::string good = FileBytes(MakeSamples(4, 8, 4));
  std::vector<std::string> damaged = {"", good.substr(0, 11), good.substr(0, good.size() - 1)};
  constexpr int32_t kHuge = 2147483647;
  for (const auto& [N, Nin, Ny] : {std::array{-1, 8, 4}, {4, -8, 40}, {4, 8, -4}, {kHuge, kHuge, kHuge}, {kHuge, 0, 0}})
    damaged.push_back(Int32Bytes({N, Nin, Ny}) + good.substr(12));
  for (const std::string& bytes : damaged) {
    WriteBytes(folder / "set", bytes);
    for (const bool shuffled : {false, true}) {
      TrainingSet set = MakeSamples(2, 8, 4);
      CHECK_THROWS_WITH_AS((shuffled ? LoadTrainingSetShuffled(set, folder / "set", Folder::asGiven)
                                     : LoadTrainingSet(set, folder / "set", Folder::asGiven)),
                           "PROBLEM OPENING FILE!", const char*);
      CHECK(set.N == 0);
    }
    CHECK_THROWS_WITH_AS(ShuffleTrainingFile(folder / "set"), "PROBLEM OPENING FILE!", const char*);
    CHECK(ReadBytes(folder / "set") == bytes);
  }
  TrainingSet set;
  CHECK_THROWS_WITH_AS(LoadTrainingSet(set, folder / "missing", Folder::asGiven), "PROBLEM OPENING FILE!", const char*);
  CHECK_THROWS_WITH_AS(SaveTrainingSet(set, folder / "no/such/folder", Folder::asGiven), "PROBLEM OPENING FILE!",
                       const char*);
}
