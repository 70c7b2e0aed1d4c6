#include "train/training_set.h"

#include <cstring>
#include <utility>

#include "linear/matrix2.h"
#include "platform/console.h"
#include "platform/paths.h"

namespace norv {
namespace {

void Allocate(TrainingSet& set) {
  const int64_t floats = set.N * set.RecordFloats();
  try {
    set.block = MakeAligned<float>(static_cast<size_t>(floats));
  } catch (const std::bad_alloc&) {
    ClearTrainingSet(set);
    ThrowOutOfMemory(static_cast<double>(floats));
  }
  set.records = set.block.get();
}

void SetSizes(TrainingSet& set, const TrainingHeader& header) {
  set.N = header.N;
  set.Nin = header.Nin;
  set.Ny = header.Ny;
}

void RefuseShortFile(TrainingSet& set, const FileIn& file) {
  if (file.Complete()) return;
  ClearTrainingSet(set);
  Complain("cannot read %s: it ends early", file.Path().c_str());
  throw kTrainingFileProblem;
}

void Map(TrainingSet& set, const std::string& path, const TrainingHeader& header) {
  auto file = std::make_unique<MappedFile>(path);
  if (!file->IsOpen() || file->Size() < header.FileBytes()) {
    Complain("cannot map %s into memory", path.c_str());
    throw kTrainingFileProblem;
  }
  SetSizes(set, header);
  set.records = reinterpret_cast<const float*>(file->Bytes() + kTrainingHeaderBytes);
  set.file = std::move(file);
}

// Reads the records piece by piece; each goes to its place in the block.
void ReadScattered(TrainingSet& set, FileIn& file, const int32_t* order) {
  const int64_t recordFloats = set.RecordFloats();
  if (set.N == 0 || recordFloats == 0) return;
  const int64_t pieceRecords = std::max<int64_t>(1, (int64_t{1} << 18) / recordFloats);
  const auto piece = MakeAligned<float>(static_cast<size_t>(pieceRecords * recordFloats));
  for (int64_t first = 0; first < set.N; first += pieceRecords) {
    const int64_t count = std::min<int64_t>(pieceRecords, set.N - first);
    file.Array(piece.get(), static_cast<size_t>(count * recordFloats));
    for (int64_t i = 0; i < count; ++i)
      std::memcpy(set.Record(order[first + i]), piece.get() + i * recordFloats,
                  static_cast<size_t>(recordFloats) * sizeof(float));
  }
}

}  // namespace

void CreateTrainingSet(TrainingSet& set, int32_t N, int32_t Nin, int32_t Ny) {
  if (set.N == N && set.Nin == Nin && set.Ny == Ny && (set.block || N == 0)) return;
  ClearTrainingSet(set);
  SetSizes(set, {N, Nin, Ny});
  Allocate(set);
}

void ClearTrainingSet(TrainingSet& set) { set = TrainingSet(); }

void SaveTrainingSet(const TrainingSet& set, const std::string& name, Folder folder, Durability durability) {
  FileOut file(PathOf(name, folder), durability);
  WriteHeader(file, TrainingHeader{set.N, set.Nin, set.Ny});
  file.Array(set.records, static_cast<size_t>(set.N * set.RecordFloats()));
  if (!file.Commit()) throw kTrainingFileProblem;
}

void LoadTrainingSet(TrainingSet& set, const std::string& name, Folder folder, int64_t memory) {
  ClearTrainingSet(set);
  FileIn file(PathOf(name, folder));
  const TrainingHeader header = ReadTrainingHeader(file);
  RequireRecords(file, header);
  if (header.FileBytes() > memory) return Map(set, file.Path(), header);
  CreateTrainingSet(set, header.N, header.Nin, header.Ny);
  file.Array(set.block.get(), static_cast<size_t>(set.N * set.RecordFloats()));
  RefuseShortFile(set, file);
}

void LoadTrainingSetShuffled(TrainingSet& set, const std::string& name, Folder folder) {
  // Memory that was used before is much faster than fresh memory: a block of the right size serves again.
  TrainingSet previous = std::move(set);
  ClearTrainingSet(set);
  FileIn file(PathOf(name, folder));
  const TrainingHeader header = ReadTrainingHeader(file);
  RequireRecords(file, header);
  const auto order = ShuffledOrder(header.N);
  CreateTrainingSet(previous, header.N, header.Nin, header.Ny);
  set = std::move(previous);
  ReadScattered(set, file, order.get());
  RefuseShortFile(set, file);
}

}  // namespace norv
