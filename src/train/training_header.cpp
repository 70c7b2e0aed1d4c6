#include "train/training_header.h"

#include <limits>

namespace norv {

int64_t TrainingHeader::FileBytes() const {
  constexpr int64_t kMost = std::numeric_limits<int64_t>::max();
  const bool countable = N <= 0 || RecordBytes() <= (kMost - kTrainingHeaderBytes) / N;
  return countable ? kTrainingHeaderBytes + N * RecordBytes() : kMost;
}

const char* WhyNoTrainingSet(const TrainingHeader& header) {
  if (header.N < 0 || header.Nin < 0 || header.Ny < 0) return "its header has negative sizes";
  if (header.N > 0 && header.RecordBytes() == 0) return "its records are empty";
  return nullptr;
}

}  // namespace norv
