#include "kit/batch/lanes.h"

#include <charconv>
#include <cstdio>
#include <cstring>

#include "kit/failure.h"

namespace norv {
namespace {

// From so many pixels of the result on a picture works alone on all cores: its strips are then enough for all of them,
// and one large picture at a time takes less memory than several. Smaller ones are faster side by side.
constexpr int64_t kLargePixels = int64_t{16} << 20;

constexpr char kUnits[] = "KMGT";

}  // namespace

bool WorksAlone(const WorkPlan& plan, int32_t threads) {
  return threads > 1 && plan.teams && int64_t{plan.result.width} * plan.result.height >= kLargePixels;
}

uint64_t BytesOf(const std::string& text) {
  double value = 0;
  const char *at = text.data(), *end = at + text.size();
  const auto read = std::from_chars(at, end, value, std::chars_format::fixed);
  if (read.ec != std::errc() || !(value > 0)) return 0;
  std::string unit(read.ptr, end);
  if (!unit.empty() && unit[0] == ' ') unit.erase(0, 1);
  for (char& c : unit)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  if (unit.size() == 2 && unit[1] == 'B') unit.pop_back();
  if (unit.size() == 3 && unit.ends_with("IB")) unit.erase(1);
  if (unit == "B") unit.clear();
  const char* known = unit.size() == 1 ? std::strchr(kUnits, unit[0]) : nullptr;
  if (!unit.empty() && !known) return 0;
  for (const char* each = kUnits; known && each <= known; ++each) value *= 1024;
  constexpr double kMost = 9e18;
  return value >= 1 && value < kMost ? static_cast<uint64_t>(value) : 0;
}

std::string BytesInWords(uint64_t bytes) {
  double value = static_cast<double>(bytes) / 1024;
  size_t unit = 0;
  for (; value >= 1000 && unit + 2 < sizeof kUnits; ++unit) value /= 1024;
  char text[32];
  std::snprintf(text, sizeof text, value < 9.95 ? "%.1f %cB" : "%.0f %cB", value, kUnits[unit]);
  return text;
}

int32_t ThreadsWithin(const WorkPlan& plan, int32_t threads, uint64_t bound) {
  for (int32_t t = threads; t >= 1; --t)
    if (plan.cost.Memory(t) <= bound) return t;
  Fail("it needs about %s of memory, more than --memory allows (%s)", BytesInWords(plan.cost.Memory(1)).c_str(),
       BytesInWords(bound).c_str());
}

void Lanes::AwaitTurn(std::unique_lock<std::mutex>& lock, int64_t turn) {
  changed_.wait(lock, [&] { return turn_ == turn && !alone_; });
}

void Lanes::EndTurn() {
  ++turn_;
  changed_.notify_all();
}

void Lanes::Pass(int64_t turn) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return turn_ == turn; });
  EndTurn();
}

Lanes::Place::Place(Lanes& lanes, int64_t turn, const WorkPlan& plan) : lanes_(lanes) {
  std::unique_lock lock(lanes.mutex_);
  lanes.AwaitTurn(lock, turn);
  const bool alone = WorksAlone(plan, lanes.threads_);
  try {
    if (alone) threads_ = lanes.chosen_ ? ThreadsWithin(plan, lanes.threads_, lanes.bound_) : lanes.threads_;
    if (!alone && lanes.chosen_) ThreadsWithin(plan, 1, lanes.bound_);
  } catch (...) {
    lanes.EndTurn();
    throw;
  }
  memory_ = plan.cost.Memory(threads_);
  const auto fits = [&] { return !alone && lanes.taken_ + memory_ <= lanes.bound_; };
  lanes.changed_.wait(lock, [&] { return lanes.working_ == 0 || fits(); });
  isFirst_ = lanes.working_++ == 0;
  lanes.taken_ += memory_;
  lanes.alone_ = alone;
  lanes.EndTurn();
}

Lanes::Place::~Place() {
  const std::lock_guard lock(lanes_.mutex_);
  --lanes_.working_;
  lanes_.taken_ -= memory_;
  lanes_.alone_ = false;
  lanes_.changed_.notify_all();
}

}  // namespace norv
