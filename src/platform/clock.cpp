#include "platform/clock.h"

#include <chrono>
#include <ctime>
#include <time.h>

namespace norv {
namespace {

template <typename Duration>
auto SinceEpoch() {
  return std::chrono::duration_cast<Duration>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

int32_t Clock() { return static_cast<int32_t>(static_cast<uint32_t>(SinceEpoch<std::chrono::milliseconds>())); }

double ThreadSeconds() {
  timespec used = {};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
  return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

double ProcessorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

double Seconds() { return static_cast<double>(SinceEpoch<std::chrono::nanoseconds>()) * 1e-9; }

}  // namespace norv
