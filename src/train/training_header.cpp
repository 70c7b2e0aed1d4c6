#include "train/training_header.h"

#include <limits>

namespace norv {

bool TrainingHeader::Possible() const {
  constexpr int64_t kMost = std::numeric_limits<int64_t>::max() - kTrainingHeaderBytes;
  return N >= 0 && Nin >= 0 && Ny >= 0 && (N == 0 || RecordBytes() <= kMost / N);
}

int64_t TrainingHeader::FileBytes() const { return kTrainingHeaderBytes + N * RecordBytes(); }

const char* WhyNoTrainingSet(const TrainingHeader& header) {
  if (header.N < 0 || header.Nin < 0 || header.Ny < 0) return "its header has negative sizes";
  if (!header.Possible()) return "its header counts more than any file holds";
  if (header.N > 0 && header.RecordBytes() == 0) return "its records are empty";
  return nullptr;
}

}  // namespace norv
