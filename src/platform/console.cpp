#include "platform/console.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>

#ifdef _WIN32
#include <conio.h>
#include <fcntl.h>
#include <io.h>
#else
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>
#endif

namespace norv {
namespace {

const char* programName = "norv";

void PrintLine(const char* prefix, const char* format, va_list arguments) {
  std::fflush(stdout);
  std::fprintf(stderr, "%s: %s", programName, prefix);
  std::vfprintf(stderr, format, arguments);
  std::fputc('\n', stderr);
  std::fflush(stderr);
}

}  // namespace

void NameProgram(const char* name) { programName = name; }

void Say(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::vprintf(format, arguments);
  va_end(arguments);
  std::fflush(stdout);
}

void Warn(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  PrintLine("warning: ", format, arguments);
  va_end(arguments);
}

void Complain(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  PrintLine("", format, arguments);
  va_end(arguments);
}

double Printable(double value) { return std::isnan(value) ? std::abs(value) : value; }

#ifdef _WIN32

void PrepareConsole() {
  for (FILE* stream : {stdin, stdout, stderr})
    if (_fileno(stream) < 0) std::freopen("NUL", stream == stdin ? "rb" : "wb", stream);
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
}

bool ProgressIsVisible() { return _isatty(_fileno(stderr)); }

void WaitForKeys(int count) {
  const bool terminal = _isatty(_fileno(stdin));
  for (int key = 0; key < count; ++key) {
    char byte;
    if (terminal)
      _getch();
    else if (_read(_fileno(stdin), &byte, 1) <= 0)
      return;
  }
}

#else

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
    if (!isatty(STDIN_FILENO) || tcgetattr(STDIN_FILENO, &savedTerminal) != 0) return;
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
    active_ = tcsetattr(STDIN_FILENO, TCSANOW, &raw) == 0;
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
  for (int descriptor = 0; descriptor <= 2; ++descriptor)
    if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", O_RDWR) < 0) std::abort();
  // A reader that went away must not end the run before its files are written.
  std::signal(SIGPIPE, SIG_IGN);
  // Beyond a limit on file sizes a write fails like one on a full disk.
  std::signal(SIGXFSZ, SIG_IGN);
}

bool ProgressIsVisible() { return isatty(STDERR_FILENO); }

void WaitForKeys(int count) {
  RawTerminal terminal;
  for (int key = 0; key < count; ++key) {
    char byte;
    ssize_t got;
    do got = read(STDIN_FILENO, &byte, 1);
    while (got < 0 && errno == EINTR);
    if (got <= 0) return;
  }
}

#endif

}  // namespace norv
