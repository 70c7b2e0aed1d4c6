// Watching a training run, on standard error and only when that is a terminal, and stopping it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/interrupt.h"

namespace norv {

// Eight heights of bars, one a value, from the least to the greatest; at most `width` of the last values. Infinite
// values and NaN are blanks.
std::string Sparkline(const std::vector<float>& values, size_t width);

// Draws epoch, samples per second, time left and the costs so far, a few times a second; notes a wish to stop.
class TrainingWatch {
 public:
  TrainingWatch(int32_t epochs, int64_t samples);
  ~TrainingWatch();
  TrainingWatch(const TrainingWatch&) = delete;
  TrainingWatch& operator=(const TrainingWatch&) = delete;

  bool StopRequested() const { return InterruptWatch::Requested(); }
  // Samples of this epoch that are done, to be called every few thousand of them.
  void Advance(int64_t samples);
  // Before a message on standard output: takes the line away.
  void EpochDone(float cost);

 private:
  void Draw(double now);
  void Wipe();

  InterruptWatch interrupts_;
  int32_t epochs_;
  int64_t samples_;
  int32_t epoch_ = 0;
  int64_t done_ = 0;  // samples of this epoch
  double start_, nextDraw_;
  bool visible_, drawn_ = false;
  std::vector<float> costs_;
};

}  // namespace norv
