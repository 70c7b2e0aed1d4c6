// The header of a training set's file (test.dat, temp.dat) and what it says about the file: its one description, for
// whoever reads, writes or looks at such files.
#pragma once

#include <cstdint>

#include "platform/header.h"

namespace norv {

// N records of Nin inputs and Ny targets, single precision, follow it.
struct TrainingHeader {
  int32_t N = 0, Nin = 0, Ny = 0;

  // No size is negative and 64 bits count the file's bytes.
  bool Possible() const;
  int64_t RecordBytes() const { return 4 * (int64_t{Nin} + Ny); }
  // From the file's start to behind the last counted record.
  int64_t FileBytes() const;
};

template <typename File>
constexpr void Transfer(File& file, TrainingHeader& header) {
  file.Field(header.N);
  file.Field(header.Nin);
  file.Field(header.Ny);
}

inline constexpr int64_t kTrainingHeaderBytes = HeaderBytes<TrainingHeader>();

// Null when the header is possible and counted records hold anything; otherwise what is wrong with it.
const char* WhyNoTrainingSet(const TrainingHeader& header);

}  // namespace norv
