// The ends of a run that come from outside: a wish to stop a long one, and what must not outlive it.
#pragma once

#include <string>

namespace norv {

// From now on an interrupt (as below) that nobody watches for removes scratch files and ends the process with exit code
// 130 and a line on standard error, instead of by its signal. The text has to stay.
void EndInterruptsInWords(const char* line);

// While it lives, the first interrupt (SIGINT or SIGTERM; on Windows Ctrl-C and the like) is only noted. The second one
// ends the process at once as it would have without this. One at a time.
class InterruptWatch {
 public:
  InterruptWatch();
  ~InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;

  static bool Requested();
};

// A file that must not outlive the run: while this lives, every end that a process can see coming (signals, an exit, an
// abort; on Windows the console's events) removes it first. What a kill leaves, later runs remove. 64 at a time, any
// further ones and paths of more than 4095 bytes are not guarded.
class ScratchGuard {
 public:
  explicit ScratchGuard(const std::string& path);
  ~ScratchGuard();
  ScratchGuard(const ScratchGuard&) = delete;
  ScratchGuard& operator=(const ScratchGuard&) = delete;

 private:
  int slot_;
};

}  // namespace norv
