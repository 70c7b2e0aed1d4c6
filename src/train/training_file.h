// test.dat as a file: its header, checked against its size; its records shuffled or continued where they stand.
#pragma once

#include <cstdint>
#include <string>

#include "platform/file.h"
#include "platform/memory.h"

namespace norv {

// What is thrown for a training set that cannot be opened, read or written.
inline constexpr const char* kTrainingFileProblem = "PROBLEM OPENING FILE!";

inline constexpr int64_t kTrainingHeaderBytes = 12;

struct TrainingHeader {
  int32_t N = 0, Nin = 0, Ny = 0;

  int64_t RecordBytes() const { return 4 * (int64_t{Nin} + Ny); }
  // From the file's start to behind the last counted record.
  int64_t FileBytes() const { return kTrainingHeaderBytes + N * RecordBytes(); }
};

// Reads the header and refuses (throws kTrainingFileProblem, reason on standard error) what is not open, has negative
// sizes, or holds fewer records than it counts. Bytes behind the counted records are none of our business.
TrainingHeader ReadTrainingHeader(FileIn& file);

// How large a training set may be to be held in memory.
int64_t MemoryForTrainingSet();

// The next random order of N records: record j of the file goes to place order[j]. Draws 2 N random numbers. Throws the
// out-of-memory message.
AlignedArray<int32_t> ShuffledOrder(int32_t N);

// Puts the records of the file in the next random order; the file is replaced as a whole. A file larger than `memory`
// bytes is read once per part of its result that memory can hold. Throws kTrainingFileProblem, the old file kept.
void ShuffleTrainingFile(const std::string& path, Durability durability = Durability::durable,
                         int64_t memory = MemoryForTrainingSet());

}  // namespace norv
