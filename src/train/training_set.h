// The training set: pairs of an input vector and a target vector, in memory and as a file.
//
// File (test.dat, temp.dat): N, Nin, Ny as int32, then N records of Nin inputs and Ny targets, single precision. The
// set in memory is that very sequence of records, in one block of its own or, when memory cannot hold it, in the mapped
// file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/file.h"
#include "platform/mapped_file.h"
#include "platform/memory.h"
#include "platform/paths.h"
#include "train/training_file.h"

namespace norv {

struct TrainingSet {
  int32_t N = 0;    // samples
  int32_t Nin = 0;  // inputs of a sample
  int32_t Ny = 0;   // targets of a sample: a 4 x 4 block for 16, 2 x 2 for 4, in row-major order; else a column

  // Exactly one of them holds the records; neither when the set is empty.
  AlignedArray<float> block;
  std::unique_ptr<MappedFile> file;
  const float* records = nullptr;

  int64_t RecordFloats() const { return int64_t{Nin} + Ny; }
  // Nin values; the sample's Ny targets lie right behind them.
  const float* Input(int64_t sample) const { return records + sample * RecordFloats(); }
  const float* Target(int64_t sample) const { return Input(sample) + Nin; }
  // The same, to be written; only in a set with a block.
  float* Record(int64_t sample) { return block.get() + sample * RecordFloats(); }
};

// Gives the set N samples of these sizes, their values undefined. A set that has them already keeps its values. Throws
// the out-of-memory message, leaving the set empty.
void CreateTrainingSet(TrainingSet& set, int32_t N, int32_t Nin, int32_t Ny);

void ClearTrainingSet(TrainingSet& set);

// Throws "PROBLEM OPENING FILE!" when the file cannot be written, its old contents kept.
void SaveTrainingSet(const TrainingSet& set, const std::string& name, Folder folder,
                     Durability durability = Durability::durable);

// Samples in file order. A file larger than `memory` bytes is mapped instead of read. Throws "PROBLEM OPENING FILE!"
// for a file that cannot be opened or that is shorter than its header says (reason on standard error); the set is empty
// then.
void LoadTrainingSet(TrainingSet& set, const std::string& name, Folder folder, int64_t memory = MemoryForTrainingSet());

// Record j becomes sample ShuffledOrder(N)[j]. Failures as LoadTrainingSet, and the out-of-memory message.
void LoadTrainingSetShuffled(TrainingSet& set, const std::string& name, Folder folder);

}  // namespace norv
