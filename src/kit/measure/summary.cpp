#include "kit/measure/summary.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "platform/console.h"

namespace norv {

// Mean and squares are kept up to date value by value (Welford 1962), so that long sums lose nothing.
void Summary::Add(const float* values, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    const double value = values[i];
    if (!std::isfinite(value)) {
      ++notFinite_;
      continue;
    }
    min_ = count_ ? std::min(min_, value) : value;
    max_ = count_ ? std::max(max_, value) : value;
    const double off = value - mean_;
    mean_ += off / static_cast<double>(++count_);
    squares_ += off * (value - mean_);
  }
}

double Summary::Deviation() const { return count_ ? std::sqrt(squares_ / static_cast<double>(count_)) : 0; }

std::string Summary::Text() const {
  char text[160] = "no finite values", more[64] = "";
  if (count_)
    std::snprintf(text, sizeof text, "%.6g .. %.6g, mean %.6g, deviation %.6g", min_, max_, mean_, Deviation());
  if (notFinite_) std::snprintf(more, sizeof more, ", %lld not finite", static_cast<long long>(notFinite_));
  return std::string(text) + more;
}

void Histogram::Add(const float* values, size_t n) {
  const double scale = high_ > low_ ? kBins / (high_ - low_) : 0;
  for (size_t i = 0; i < n; ++i) {
    if (!std::isfinite(values[i])) continue;
    const double bin = std::clamp((values[i] - low_) * scale, 0.0, kBins - 1.0);
    ++counts_[static_cast<int>(bin)];
  }
}

void Histogram::Print() const {
  constexpr int kWidest = 48;
  int64_t sum = 0, most = 0;
  for (const int64_t count : counts_) {
    sum += count;
    most = std::max(most, count);
  }
  if (sum == 0) return;
  const double part = (high_ - low_) / kBins;
  for (int bin = 0; bin < kBins; ++bin) {
    const int bar = static_cast<int>((counts_[bin] * kWidest + most - 1) / most);
    Say("  %10.4g  %-*.*s %5.1f %%\n", low_ + bin * part, kWidest, bar,
        "################################################",
        100.0 * static_cast<double>(counts_[bin]) / static_cast<double>(sum));
  }
}

}  // namespace norv
