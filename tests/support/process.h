// Programs run as a user or the graphical program would: arguments, environment, streams, terminal, exit code.
#pragma once

#include <string>
#include <sys/types.h>
#include <termios.h>
#include <vector>

#include "support/places.h"
#include "support/scratch.h"

namespace norv::test {

struct Command {
  std::vector<std::string> arguments;
  std::vector<std::string> environment = {};  // NAME=VALUE on top of the test's own
  std::string executable = NorvExecutable();
  std::string directory = "/";  // current directory
  std::string input = "";       // what standard input holds, then its end
  std::string output = "";      // where standard output goes instead of the outcome
  std::string closed = "";      // the standard streams that are closed at start, such as "02"
  int signal = 0;               // that is sent to it,
  double after = 0;             // so many seconds after it has begun to listen for it
};

struct Outcome {
  int exitCode;  // 128 + the signal that ended it
  std::string output, errors;
};

// A run that lasts more than a minute is killed (137).
Outcome Run(const Command& command);

// The words of one line of a shell without quotes, and further ones behind them.
std::vector<std::string> Words(const std::string& line, const std::vector<std::string>& more = {});

// norv with the words of a line, its files in the folder, another current directory, and keys to read.
Command NorvIn(const ScratchFolder& folder, const std::string& line);
inline Outcome RunIn(const ScratchFolder& folder, const std::string& line) { return Run(NorvIn(folder, line)); }

// The messages that frame every run of norv.
inline const std::string kBanner = "\nBegin 64 bit Command Line Processing\nVersion 5.6";

// Whether the output is the banner, exactly this text, and the end report with any times.
bool IsReported(const std::string& output, const std::string& text);

// Checks how a run ended, and that it complained with these words among others: of nothing where there are none.
void CheckEnded(const Outcome& outcome, int exitCode, const std::string& complaint = "");

// Checks that a run ended well with such an output and without a warning.
void CheckReported(const Outcome& outcome, const std::string& text);

// A program on a terminal of its own; standard output and error go there too.
class TerminalRun {
 public:
  explicit TerminalRun(const Command& command);
  ~TerminalRun();
  TerminalRun(const TerminalRun&) = delete;
  TerminalRun& operator=(const TerminalRun&) = delete;

  // Waits, up to 20 seconds, until the terminal echoes or does not; returns whether it came to that.
  bool WaitForEcho(bool echo) const;
  termios Settings() const;
  void Type(const std::string& keys) const;
  void Signal(int signal) const;
  // Exit code as in Outcome.
  int Wait();
  // All that appeared on the terminal until now.
  std::string Shown();
  // What was typed but read by nobody.
  std::string Unread() const;
  // The terminal's other end goes away.
  void HangUp();

 private:
  int master_ = -1, slave_ = -1;
  pid_t child_ = -1;
  std::string shown_;
};

}  // namespace norv::test
