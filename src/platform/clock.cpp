#include "platform/clock.h"

#include <chrono>

namespace norv {
namespace {

template <typename Duration>
auto SinceEpoch() {
  return std::chrono::duration_cast<Duration>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

int32_t Clock() { return static_cast<int32_t>(static_cast<uint32_t>(SinceEpoch<std::chrono::milliseconds>())); }

double Seconds() { return static_cast<double>(SinceEpoch<std::chrono::nanoseconds>()) * 1e-9; }

}  // namespace norv
