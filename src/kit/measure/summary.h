// What a heap of numbers looks like in a few lines.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace norv {

// Count, extremes, mean and standard deviation of values that come in pieces; what is not finite is counted apart.
class Summary {
 public:
  void Add(const float* values, size_t n);
  int64_t Count() const { return count_; }
  int64_t NotFinite() const { return notFinite_; }
  double Min() const { return min_; }
  double Max() const { return max_; }
  double Mean() const { return mean_; }
  double Deviation() const;
  // "0 .. 255, mean 118.2, deviation 40.1, 3 not finite".
  std::string Text() const;

 private:
  int64_t count_ = 0, notFinite_ = 0;
  double min_ = 0, max_ = 0, mean_ = 0, squares_ = 0;
};

// How often values fall into the equal parts of a range; those outside count in the nearest part.
class Histogram {
 public:
  static constexpr int kBins = 16;
  Histogram(double low, double high) : low_(low), high_(high) {}
  void Add(const float* values, size_t n);
  int64_t operator[](int bin) const { return counts_[bin]; }
  // One line a part on standard output: its range, a bar, its share.
  void Print() const;

 private:
  double low_, high_;
  std::array<int64_t, kBins> counts_{};
};

}  // namespace norv
