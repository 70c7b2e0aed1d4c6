#include "platform/interrupt.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>

#ifdef _WIN32
#include <windows.h>

#include "platform/paths.h"
#else
#include <unistd.h>
#endif

namespace norv {
namespace {

std::atomic<bool> watching{false};
std::atomic<int> requests{0};

#ifdef _WIN32
using Character = wchar_t;
std::wstring Native(const std::string& path) { return Wide(path); }
void Remove(const wchar_t* path) { DeleteFileW(path); }
#else
using Character = char;
const std::string& Native(const std::string& path) { return path; }
void Remove(const char* path) { unlink(path); }
#endif

constexpr int kSlots = 8, kLongestPath = 4096;

// Fixed memory and atomic states, for a handler may look at any instant.
struct Slot {
  std::atomic<bool> taken{false}, filled{false};
  Character path[kLongestPath];
};
Slot slots[kSlots];

void RemoveScratchFiles() {
  for (Slot& slot : slots)
    if (slot.filled) Remove(slot.path);
}

// The first wish to stop is noted while somebody watches; false: the run has to end.
bool OnlyNoted() { return watching && requests.exchange(1) == 0; }

#ifdef _WIN32

BOOL WINAPI OnConsoleEvent(DWORD) {
  if (OnlyNoted()) return TRUE;
  RemoveScratchFiles();
  return FALSE;  // the system's own way: the process ends
}

void InstallHandlers() { SetConsoleCtrlHandler(OnConsoleEvent, TRUE); }

#else

// Only what is safe in a handler: notes, unlink, the signal's own default.
extern "C" void OnSignal(int signal) {
  if ((signal == SIGINT || signal == SIGTERM) && OnlyNoted()) return;
  RemoveScratchFiles();
  struct sigaction ordinary = {};
  ordinary.sa_handler = SIG_DFL;
  sigaction(signal, &ordinary, nullptr);
  raise(signal);
}

void InstallHandlers() {
  struct sigaction action = {}, previous;
  action.sa_handler = OnSignal;
  action.sa_flags = SA_RESTART;  // file calls go on
  // What the parent chose to ignore (a run in the background) stays ignored, what a sanitizer took stays its own.
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXCPU, SIGABRT, SIGBUS, SIGSEGV})
    if (sigaction(signal, nullptr, &previous) == 0 && previous.sa_handler == SIG_DFL)
      sigaction(signal, &action, nullptr);
}

#endif

void InstallOnce() {
  static const bool installed = [] {
    InstallHandlers();
    std::atexit(RemoveScratchFiles);
    return true;
  }();
  static_cast<void>(installed);
}

}  // namespace

bool InterruptWatch::Requested() { return requests != 0; }

InterruptWatch::InterruptWatch() {
  requests = 0;
  InstallOnce();
  watching = true;
}

InterruptWatch::~InterruptWatch() { watching = false; }

ScratchGuard::ScratchGuard(const std::string& path) : slot_(-1) {
  const auto& native = Native(path);
  if (native.size() >= kLongestPath) return;
  InstallOnce();
  for (int i = 0; i < kSlots && slot_ < 0; ++i)
    if (!slots[i].taken.exchange(true)) slot_ = i;
  if (slot_ < 0) return;
  *std::copy(native.begin(), native.end(), slots[slot_].path) = 0;
  slots[slot_].filled = true;
}

ScratchGuard::~ScratchGuard() {
  if (slot_ < 0) return;
  slots[slot_].filled = false;
  slots[slot_].taken = false;
}

}  // namespace norv
