// test.dat as modes 9 and 12 read it: every road accepts the same files and finds the same records.
#include "train/training_set.h"

#include "fuzz.h"

using namespace norv;
using namespace norv::fuzz;

namespace {

std::string RecordsOf(const TrainingSet& set) {
  return std::string(reinterpret_cast<const char*>(set.records), size_t(set.N * set.RecordFloats()) * sizeof(float));
}

std::string Sorted(const std::string& records, int64_t size) {
  std::vector<std::string> parts;
  for (size_t at = 0; at < records.size(); at += size_t(size)) parts.push_back(records.substr(at, size_t(size)));
  std::sort(parts.begin(), parts.end());
  std::string all;
  for (const std::string& part : parts) all += part;
  return all;
}

void RequireShuffled(const std::string& path, std::string_view bytes, const TrainingSet& set, int64_t memory) {
  PutFile("a.dat", bytes);
  ShuffleTrainingFile(path, Durability::scratch, memory);
  const std::string shuffled = BytesOf("a.dat"), records = RecordsOf(set);
  Require(shuffled.size() == kTrainingHeaderBytes + records.size(), "a shuffled file has the counted records");
  Require(shuffled.substr(0, kTrainingHeaderBytes) == bytes.substr(0, kTrainingHeaderBytes), "and the same header");
  const int64_t size = 4 * set.RecordFloats();
  Require(Sorted(shuffled.substr(kTrainingHeaderBytes), size) == Sorted(records, size), "each of them once");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes = Input(data, size).Rest();
  const std::string path = PutFile("a.dat", bytes);
  TrainingSet set, mapped, shuffled;
  const bool accepted = Accepts([&] { LoadTrainingSet(set, path, Folder::asGiven); });
  const auto agrees = [&](bool other) { Require(other == accepted, "all roads accept the same files"); };
  agrees(Accepts([&] { LoadTrainingSet(mapped, path, Folder::asGiven, 1); }));
  agrees(Accepts([&] { LoadTrainingSetShuffled(shuffled, path, Folder::asGiven); }));
  if (!accepted) {
    Require(set.N == 0 && !set.block && !set.file, "a refused set is cleared");
    agrees(Accepts([&] { ShuffleTrainingFile(path); }));
    Require(BytesOf("a.dat") == bytes, "a refused file stays as it is");
    return 0;
  }
  Require(RecordsOf(set) == RecordsOf(mapped), "mapped as read");
  if (set.N > 100) return 0;
  RequireShuffled(path, bytes, set, MemoryForTrainingSet());
  RequireShuffled(path, bytes, set, 8 * set.RecordFloats() + 1);
  return 0;
}
