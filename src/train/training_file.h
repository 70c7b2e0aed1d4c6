// test.dat as a file: its header, checked against its size; its records shuffled or continued where they stand.
#pragma once

#include <cstdint>
#include <string>

#include "platform/file.h"
#include "platform/memory.h"
#include "train/training_header.h"

namespace norv {

// What is thrown for a training set that cannot be opened, read or written.
inline constexpr const char* kTrainingFileProblem = "PROBLEM OPENING FILE!";

// Reads the header alone, whatever its sizes. Throws kTrainingFileProblem, reason on standard error, for a file that is
// not open or ends within its header.
TrainingHeader ReadTrainingHeader(FileIn& file);

// Refuses, as ReadTrainingHeader() does, a header that makes no sense (WhyNoTrainingSet).
void RequireSizes(const FileIn& file, const TrainingHeader& header);
// And also a file that holds fewer records than its header counts. Bytes behind the counted records are none of our
// business.
void RequireRecords(const FileIn& file, const TrainingHeader& header);

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
