#include "driver/report.h"

#include <cstdio>

#include "platform/clock.h"
#include "platform/console.h"
#include "platform/sound.h"

namespace norv {

std::string TimeMessage(int32_t milliseconds) {
  const double seconds = static_cast<float>(milliseconds) * 0.001f;
  const double minutes = seconds * (1.0 / 60.0);
  const double hours = minutes * (1.0 / 60.0);
  const double days = hours * (1.0 / 24.0);
  char text[128];
  std::snprintf(text, sizeof text, "\n%.2f secs, %.2f mins., %.2f hrs., %.2f days", seconds, minutes, hours, days);
  return text;
}

void SayElapsed(int32_t start) {
  // The clock wraps: its difference is formed without a sign.
  const uint32_t elapsed = static_cast<uint32_t>(Clock()) - static_cast<uint32_t>(start);
  Say("%s", TimeMessage(static_cast<int32_t>(elapsed)).c_str());
}

void SayEndReport(int32_t start) {
  SayElapsed(start);
  Say("\nDone!");
}

int32_t ClampThreads(int32_t threads, int32_t processors) {
  if (threads <= processors) return threads;
  Say("\nNumber of threads changed from %d to %d because it is the maximum for your CPU.", threads, processors);
  return processors;
}

int32_t ClampBitThreads(int32_t threads, int32_t processors) {
  if (threads <= processors) Say("\nNumber of threads = %d", threads);
  return ClampThreads(threads, processors);
}

void SayAndWait(const char* message, bool sound) {
  Say("%s", message);
  if (sound) PlayNotification();
  WaitForKeys(3);
}

void SayAndWaitForOneKey(const std::string& message) {
  Say("%s", message.c_str());
  WaitForKeys(1);
}

}  // namespace norv
