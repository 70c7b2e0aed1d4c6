#include "platform/interrupt.h"

#include <csignal>
#include <cstring>

#ifdef _WIN32
#include <windows.h>

#include "platform/paths.h"
#else
#include <unistd.h>
#endif

namespace norv {
namespace {

volatile std::sig_atomic_t requests = 0;

}  // namespace

bool InterruptWatch::Requested() { return requests != 0; }

#ifdef _WIN32

namespace {

wchar_t scratch[32768];

BOOL WINAPI OnConsoleEvent(DWORD) {
  if (requests == 0) {
    requests = 1;
    return TRUE;
  }
  if (scratch[0]) DeleteFileW(scratch);
  return FALSE;  // the system's own way: the process ends
}

}  // namespace

InterruptWatch::InterruptWatch() {
  requests = 0;
  SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
}

InterruptWatch::~InterruptWatch() { SetConsoleCtrlHandler(OnConsoleEvent, FALSE); }

void RemoveWhenKilled(const std::string& path) {
  const std::wstring wide = Wide(path);
  const size_t length = wide.size() < 32768 ? wide.size() : 0;
  std::memcpy(scratch, wide.c_str(), length * sizeof(wchar_t));
  scratch[length] = 0;
}

#else

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM};

char scratch[4096];
struct sigaction previous[2];

// Only what is safe in a handler: notes, unlink, the signal's own default.
extern "C" void OnInterrupt(int signal) {
  if (requests == 0) {
    requests = 1;
    return;
  }
  if (scratch[0]) unlink(scratch);
  struct sigaction ordinary = {};
  ordinary.sa_handler = SIG_DFL;
  sigaction(signal, &ordinary, nullptr);
  raise(signal);
}

}  // namespace

InterruptWatch::InterruptWatch() {
  requests = 0;
  struct sigaction action = {};
  action.sa_handler = OnInterrupt;
  action.sa_flags = SA_RESTART;  // file calls go on
  for (int i = 0; i < 2; ++i) {
    sigaction(kSignals[i], nullptr, &previous[i]);
    // What the parent chose to ignore (a run in the background) stays ignored.
    if (previous[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
  }
}

InterruptWatch::~InterruptWatch() {
  for (int i = 0; i < 2; ++i) sigaction(kSignals[i], &previous[i], nullptr);
}

void RemoveWhenKilled(const std::string& path) {
  const size_t length = path.size() < sizeof scratch ? path.size() : 0;
  std::memcpy(scratch, path.c_str(), length);
  scratch[length] = 0;
}

#endif

}  // namespace norv
