#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include "platform/console.h"
#include "platform/native/descriptor_posix.h"
#include "platform/native/text.h"

namespace norv {

bool ShowInConsole(const std::string&, FILE*) { return false; }
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

termios savedTerminal;

// Restores the terminal, then lets the signal do what it did before.
extern "C" void RestoreAndDie(int signal) {
  tcsetattr(STDIN_FILENO, TCSANOW, &savedTerminal);
  std::signal(signal, SIG_DFL);
  raise(signal);
}

// Unechoed, unbuffered keys while it lives.
class RawTerminal {
 public:
  RawTerminal() {
    active_ = isatty(STDIN_FILENO) && tcgetattr(STDIN_FILENO, &savedTerminal) == 0;
    if (!active_) return;
    termios raw = savedTerminal;
    raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    raw.c_cc[VMIN] = 1;
    raw.c_cc[VTIME] = 0;
    struct sigaction action = {};
    action.sa_handler = RestoreAndDie;
    for (int i = 0; i < 3; ++i) {
      sigaction(kSignals[i], nullptr, &previous_[i]);
      // A signal that the parent chose to ignore stays ignored.
      if (previous_[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
    }
    tcsetattr(STDIN_FILENO, TCSANOW, &raw);
  }
  ~RawTerminal() {
    if (!active_) return;
    tcsetattr(STDIN_FILENO, TCSANOW, &savedTerminal);
    for (int i = 0; i < 3; ++i) sigaction(kSignals[i], &previous_[i], nullptr);
  }
  RawTerminal(const RawTerminal&) = delete;
  RawTerminal& operator=(const RawTerminal&) = delete;

 private:
  struct sigaction previous_[3] = {};
  bool active_ = false;
};

}  // namespace

void PrepareConsole() {
  // Writing to a standard output that was closed fails, as it would have.
  for (int descriptor = 0; descriptor <= 2; ++descriptor)
    if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", descriptor == 1 ? O_RDONLY : O_RDWR) < 0) std::abort();
  // A reader that went away must not end the run before its files are written.
  std::signal(SIGPIPE, SIG_IGN);
  // Beyond a limit on file sizes a write fails like one on a full disk.
  std::signal(SIGXFSZ, SIG_IGN);
}

bool InputIsTerminal() { return isatty(STDIN_FILENO); }
bool OutputIsTerminal() { return isatty(STDOUT_FILENO); }
bool ProgressIsVisible() { return isatty(STDERR_FILENO); }

void WaitForKeys(int count) {
  RawTerminal terminal;
  for (int key = 0; key < count; ++key) {
    char byte;
    if (Retry([&] { return read(STDIN_FILENO, &byte, 1); }) <= 0) return;
  }
}

}  // namespace norv
