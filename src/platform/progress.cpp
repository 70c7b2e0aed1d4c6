#include "platform/progress.h"

#include <cstdio>

#include "platform/clock.h"
#include "platform/console.h"

namespace norv {
namespace {

constexpr double kFirstDraw = 0.5;  // seconds; short runs draw nothing
constexpr double kInterval = 0.2;

std::atomic<int> covered{0};  // by how many that stand for the whole

}  // namespace

Progress::Progress(const char* what, int64_t total)
    : what_(what),
      total_(total),
      start_(Seconds()),
      visible_(total > 0 && covered == 0 && !IsQuiet() && ProgressIsVisible()),
      nextDraw_(start_ + kFirstDraw) {}

ProgressCover::ProgressCover() { ++covered; }
ProgressCover::~ProgressCover() { --covered; }

Progress::~Progress() {
  if (drawn_) std::fputs("\r\033[K", stderr);
}

void Progress::Advance(int64_t units) {
  if (!visible_) return;
  const int64_t done = done_ += units;
  const double now = Seconds();
  double next = nextDraw_.load();
  // Whoever moves the next instant on draws, so that two threads never write at once.
  if (now < next || !nextDraw_.compare_exchange_strong(next, now + kInterval)) return;
  Draw(done, now);
}

void Progress::Draw(int64_t done, double now) {
  drawn_ = true;
  const double fraction = static_cast<double>(done) / static_cast<double>(total_);
  const double left = (now - start_) * (1 - fraction) / fraction;
  std::fprintf(stderr, "\r\033[K%s %3.0f %%, %.0f s left", what_, 100 * fraction, left);
  std::fflush(stderr);
}

}  // namespace norv
