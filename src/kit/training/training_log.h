// The log of a training run: a line of comma-separated values an epoch, for people, tables and the learning curve.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace norv {

struct EpochRecord {
  int32_t epoch = 0;  // from 1
  double rate = 0, cost = 0;
  double samplesPerSecond = 0, seconds = 0;  // of the training of this epoch, without its validation
  double psnr = 0, cubic = 0, lanczos = 0;   // decibels, mean over the held-out pictures
};

using TrainingLog = std::vector<EpochRecord>;

// Throws a Failure that names the file, and the line that makes no sense. Epochs count up from 1.
TrainingLog ReadTrainingLog(const std::string& path);

// The epoch with the best PSNR, the earlier of equals; 0 for an empty log.
int32_t BestEpoch(const TrainingLog& log);

// Replaces the file as a whole; throws when that failed, the old file still there.
void WriteTrainingLog(const std::string& path, const TrainingLog& log);

}  // namespace norv
