// The header of a training set's file (test.dat, temp.dat) and what it says about the file: its one description, for
// whoever reads, writes or looks at such files.
#pragma once

#include <cstdint>

namespace norv {

// N records of Nin inputs and Ny targets, single precision, follow it.
struct TrainingHeader {
  int32_t N = 0, Nin = 0, Ny = 0;

  int64_t RecordBytes() const { return 4 * (int64_t{Nin} + Ny); }
  // From the file's start to behind the last counted record. What 64 bits cannot count is the most that they can.
  int64_t FileBytes() const;
};

inline constexpr int64_t kTrainingHeaderBytes = 3 * 4;
static_assert(sizeof(TrainingHeader) == kTrainingHeaderBytes);

// Reads from a FileIn or writes to a FileOut.
template <typename File, typename Header>
void TransferTrainingHeader(File& file, Header& header) {
  file.Field(header.N);
  file.Field(header.Nin);
  file.Field(header.Ny);
}

// Null when no size is negative and counted records hold anything; otherwise what is wrong with the header.
const char* WhyNoTrainingSet(const TrainingHeader& header);

}  // namespace norv
