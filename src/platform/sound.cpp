#include "platform/sound.h"

#include <initializer_list>

#ifdef _WIN32
// clang-format off
#include <windows.h>
#include <mmsystem.h>
// clang-format on
#else
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace norv {
namespace {

#ifndef _WIN32

// In a process of its own: null streams, then the first player that exists. Only async-signal-safe calls.
[[noreturn]] void BecomePlayer(const char* file) {
  const int null = open("/dev/null", O_RDWR);
  for (int stream = 0; stream <= 2 && null >= 0; ++stream) dup2(null, stream);
  setsid();
  for (const char* player : {"pw-play", "paplay", "aplay"}) execlp(player, player, file, nullptr);
  execlp("play", "play", "-q", file, nullptr);
  _exit(1);
}

#endif

}  // namespace

#ifdef _WIN32

void PlayNotification() { PlaySoundW(L"norv.wav", nullptr, SND_FILENAME | SND_ASYNC | SND_NODEFAULT); }

void KeepAwake() { SetThreadExecutionState(ES_SYSTEM_REQUIRED); }

#else

void PlayNotification() {
  constexpr const char* kSound = "norv.wav";
  if (access(kSound, R_OK) != 0) return;
  // A grandchild: it belongs to nobody who would have to wait for it.
  const pid_t child = fork();
  if (child == 0) {
    if (fork() == 0) BecomePlayer(kSound);
    _exit(0);
  }
  if (child > 0) waitpid(child, nullptr, 0);
}

void KeepAwake() {}

#endif

}  // namespace norv
