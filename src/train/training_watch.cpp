#include "train/training_watch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>

#include "platform/clock.h"
#include "platform/console.h"

namespace norv {
namespace {

constexpr double kInterval = 0.2;       // seconds between two drawings
constexpr size_t kSparklineWidth = 24;  // characters

}  // namespace

std::string Sparkline(const std::vector<float>& values, size_t width) {
  static const char* const kBars[] = {"\u2581", "\u2582", "\u2583", "\u2584", "\u2585", "\u2586", "\u2587", "\u2588"};
  const auto begin = values.end() - static_cast<std::ptrdiff_t>(std::min(width, values.size()));
  float least = INFINITY, greatest = -INFINITY;
  std::for_each(begin, values.end(), [&](float value) {
    if (!std::isfinite(value)) return;
    least = std::min(least, value);
    greatest = std::max(greatest, value);
  });
  std::string line;
  std::for_each(begin, values.end(), [&](float value) {
    const double height = greatest > least ? (double{value} - least) / (double{greatest} - least) : 0;
    line += std::isfinite(value) ? kBars[std::lround(7 * height)] : " ";
  });
  return line;
}

TrainingWatch::TrainingWatch(int32_t epochs, int64_t samples)
    : epochs_(epochs),
      samples_(samples),
      start_(Seconds()),
      nextDraw_(start_ + kInterval),
      visible_(ProgressIsVisible()) {}

TrainingWatch::~TrainingWatch() { Wipe(); }

void TrainingWatch::Advance(int64_t samples) {
  done_ += samples;
  if (!visible_) return;
  const double now = Seconds();
  if (now >= nextDraw_) Draw(now);
}

void TrainingWatch::EpochDone(float cost) {
  ++epoch_;
  done_ = 0;
  if (visible_) costs_.push_back(cost);
  Wipe();
}

void TrainingWatch::Draw(double now) {
  nextDraw_ = now + kInterval;
  drawn_ = true;
  const double all = static_cast<double>(samples_) * epochs_;
  const double done = static_cast<double>(samples_) * epoch_ + static_cast<double>(done_);
  const double rate = done / (now - start_);
  std::fprintf(stderr, "\r\033[KEpoch %d of %d, %.0f %%, %.0f samples/s, %.0f s left  %s", epoch_ + 1, epochs_,
               100 * static_cast<double>(done_) / static_cast<double>(samples_), rate, (all - done) / rate,
               Sparkline(costs_, kSparklineWidth).c_str());
  std::fflush(stderr);
}

void TrainingWatch::Wipe() {
  if (drawn_) std::fputs("\r\033[K", stderr);
  drawn_ = false;
}

}  // namespace norv
