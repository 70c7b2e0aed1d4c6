#include "train/training_file.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "linear/index_sort.h"
#include "linear/matrix2.h"
#include "linear/random.h"
#include "platform/console.h"
#include "platform/file_lock.h"
#include "platform/mapped_file.h"

namespace norv {
namespace {

// So much is written at once, and so many records ahead of their use are fetched into the cache.
constexpr int64_t kPieceBytes = int64_t{1} << 20;
constexpr int64_t kFetchAhead = 16;

[[noreturn]] void Refuse(const FileIn& file, const char* reason) {
  Complain("cannot read %s: %s", file.Path().c_str(), reason);
  throw kTrainingFileProblem;
}

template <typename T>
AlignedArray<T> MakeOrThrowMessage(int64_t count) {
  try {
    return MakeAligned<T>(static_cast<size_t>(count));
  } catch (const std::bad_alloc&) {
    ThrowOutOfMemory(static_cast<double>(count));
  }
}

// Records in the order of the result, each fetched from where it lies in the mapped file.
void WriteGathered(FileOut& out, const TrainingHeader& header, const char* records, const int32_t* source) {
  const int64_t size = header.RecordBytes(), pieceRecords = (kPieceBytes + size - 1) / size;
  const auto piece = MakeOrThrowMessage<char>(pieceRecords * size);
  for (int64_t first = 0; first < header.N; first += pieceRecords) {
    const int64_t count = std::min<int64_t>(pieceRecords, header.N - first);
    char* target = piece.get();
    for (int64_t i = first; i < first + count; ++i, target += size) {
      const char* ahead = records + source[std::min<int64_t>(i + kFetchAhead, header.N - 1)] * size;
      for (int64_t line = 0; line < std::min<int64_t>(size, 1024); line += 64) __builtin_prefetch(ahead + line);
      std::memcpy(target, records + source[i] * size, static_cast<size_t>(size));
    }
    out.Array(piece.get(), static_cast<size_t>(count * size));
  }
}

void ShuffleMapped(const std::string& path, FileOut& out, const TrainingHeader& header, AlignedArray<int32_t> order) {
  auto source = MakeOrThrowMessage<int32_t>(header.N);
  for (int32_t j = 0; j < header.N; ++j) source[order[j]] = j;
  order.reset();
  const MappedFile mapped(path);
  if (!mapped.IsOpen() || mapped.Size() < header.FileBytes()) {
    Complain("cannot map %s into memory", path.c_str());
    throw kTrainingFileProblem;
  }
  mapped.Populate();
  WriteGathered(out, header, mapped.Bytes() + kTrainingHeaderBytes, source.get());
}

// One pass over the file per part of the result: the records that belong there are kept, the others read over.
void ShufflePart(const std::string& path, FileOut& out, const TrainingHeader& header, const int32_t* order,
                 int64_t first, int64_t count, char* part) {
  const int64_t size = header.RecordBytes(), pieceRecords = (kPieceBytes + size - 1) / size;
  const auto piece = MakeOrThrowMessage<char>(pieceRecords * size);
  FileIn file(path);
  file.Skip(kTrainingHeaderBytes);
  for (int64_t j = 0; j < header.N; ++j) {
    if (j % pieceRecords == 0)
      file.Array(piece.get(), static_cast<size_t>(std::min<int64_t>(pieceRecords, header.N - j) * size));
    const int64_t place = order[j] - first;
    if (place >= 0 && place < count)
      std::memcpy(part + place * size, piece.get() + j % pieceRecords * size, static_cast<size_t>(size));
  }
  if (!file.IsOpen() || !file.Complete()) Refuse(file, "it ends early");
  out.Array(part, static_cast<size_t>(count * size));
}

void ShuffleInParts(const std::string& path, FileOut& out, const TrainingHeader& header, const int32_t* order,
                    int64_t memory) {
  const int64_t partRecords = std::max<int64_t>(1, memory / 2 / header.RecordBytes());
  const auto part = MakeOrThrowMessage<char>(std::min<int64_t>(partRecords, header.N) * header.RecordBytes());
  for (int64_t first = 0; first < header.N; first += partRecords)
    ShufflePart(path, out, header, order, first, std::min<int64_t>(partRecords, header.N - first), part.get());
}

// Opened for the header only: the file must not be open when another takes its place.
TrainingHeader HeaderOf(const std::string& path) {
  FileIn file(path);
  const TrainingHeader header = ReadTrainingHeader(file);
  RequireRecords(file, header);
  return header;
}

}  // namespace

TrainingHeader ReadTrainingHeader(FileIn& file) {
  if (!file.IsOpen()) Refuse(file, file.Reason().c_str());
  const auto header = ReadHeader<TrainingHeader>(file);
  if (!file.Complete()) Refuse(file, "it ends within its header");
  return header;
}

void RequireSizes(const FileIn& file, const TrainingHeader& header) {
  if (const char* reason = WhyNoTrainingSet(header)) Refuse(file, reason);
}

void RequireRecords(const FileIn& file, const TrainingHeader& header) {
  RequireSizes(file, header);
  if (file.Size() < header.FileBytes()) Refuse(file, "it holds fewer records than its header counts");
}

int64_t MemoryForTrainingSet() { return static_cast<int64_t>(AvailableMemory() / 8 * 7); }

AlignedArray<int32_t> ShuffledOrder(int32_t N) {
  auto order = MakeOrThrowMessage<int32_t>(N);
  const auto key = MakeOrThrowMessage<float>(N);
  for (int32_t i = 0; i < N; ++i) {
    const int32_t low = NextRandom(), high = NextRandom();
    key[i] = static_cast<float>(static_cast<double>(high * 10000 + low) * 1e-8 + 5e-9);
  }
  try {
    IndexSort(order.get(), key.get(), N);
  } catch (const std::bad_alloc&) {
    ThrowOutOfMemory(2.0 * N);
  }
  return order;
}

void ShuffleTrainingFile(const std::string& path, Durability durability, int64_t memory) {
  const FileLock lock(path);
  const TrainingHeader header = HeaderOf(path);
  auto order = ShuffledOrder(header.N);
  FileOut out(path, durability);
  WriteHeader(out, header);
  if (header.N > 0) {
    if (header.FileBytes() <= memory)
      ShuffleMapped(path, out, header, std::move(order));
    else
      ShuffleInParts(path, out, header, order.get(), memory);
  }
  if (!out.Commit()) throw kTrainingFileProblem;
}

}  // namespace norv
