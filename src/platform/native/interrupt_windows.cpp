#include <cstdio>
#include <windows.h>

#include "platform/native/ending.h"
#include "platform/native/text.h"

namespace norv {
namespace {

// On a thread of its own, which the system makes for each event.
BOOL WINAPI OnConsoleEvent(DWORD) {
  if (OnlyNoted()) return TRUE;
  RemoveScratchFiles();
  if (const char* line = LastWords()) {
    std::fputs(line, stderr);
    ExitProcess(kInterrupted);
  }
  return FALSE;  // the system's own way: the process ends
}

}  // namespace

void InstallHandlers() { SetConsoleCtrlHandler(OnConsoleEvent, TRUE); }

void RemoveInHandler(const char* path) { DeleteFileW(WidePath(path).c_str()); }

}  // namespace norv
