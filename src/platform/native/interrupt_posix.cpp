#include <csignal>
#include <cstring>
#include <initializer_list>
#include <unistd.h>

#include "platform/native/ending.h"

namespace norv {
namespace {

void Write(const char* text) { static_cast<void>(!write(STDERR_FILENO, text, std::strlen(text))); }

// Only what is safe in a handler: notes, unlink, write, the signal's own default.
extern "C" void OnSignal(int signal) {
  const bool wish = signal == SIGINT || signal == SIGTERM;
  if (wish && OnlyNoted()) return;
  RemoveScratchFiles();
  if (const char* line = wish ? LastWords() : nullptr) {
    if (isatty(STDERR_FILENO)) Write("\r\033[K");  // progress that may stand there
    Write(line);
    _exit(kInterrupted);
  }
  struct sigaction ordinary = {};
  ordinary.sa_handler = SIG_DFL;
  sigaction(signal, &ordinary, nullptr);
  raise(signal);
}

}  // namespace

void InstallHandlers() {
  struct sigaction action = {}, previous;
  action.sa_handler = OnSignal;
  action.sa_flags = SA_RESTART;  // file calls go on
  // What the parent chose to ignore (a run in the background) stays ignored, what a sanitizer took stays its own.
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXCPU, SIGABRT, SIGBUS, SIGSEGV})
    if (sigaction(signal, nullptr, &previous) == 0 && previous.sa_handler == SIG_DFL)
      sigaction(signal, &action, nullptr);
}

void RemoveInHandler(const char* path) { unlink(path); }

}  // namespace norv
