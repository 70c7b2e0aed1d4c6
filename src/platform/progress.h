// Progress with the time left, drawn on standard error when that is a terminal and nowhere else.
#pragma once

#include <atomic>
#include <cstdint>

namespace norv {

// Counts finished units of work; any thread may advance it. The line is wiped when the object ends.
class Progress {
 public:
  // what: a short present participle such as "Enlarging"; total: units of work, 0 draws nothing.
  Progress(const char* what, int64_t total);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Advance(int64_t units = 1);

 private:
  void Draw(int64_t done, double now);

  const char* what_;
  int64_t total_;
  double start_;
  bool visible_;
  std::atomic<int64_t> done_{0};
  std::atomic<double> nextDraw_;
  bool drawn_ = false;
};

// While it lives, progress that begins is not drawn: that of the whole, begun before, stands for all parts.
class ProgressCover {
 public:
  ProgressCover();
  ~ProgressCover();
  ProgressCover(const ProgressCover&) = delete;
  ProgressCover& operator=(const ProgressCover&) = delete;
};

}  // namespace norv
