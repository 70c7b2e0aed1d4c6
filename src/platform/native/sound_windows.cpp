// clang-format off
#include <windows.h>
#include <mmsystem.h>
// clang-format on

#include "platform/sound.h"

namespace norv {

void PlayNotification() { PlaySoundW(L"norv.wav", nullptr, SND_FILENAME | SND_ASYNC | SND_NODEFAULT); }

void KeepAwake() { SetThreadExecutionState(ES_SYSTEM_REQUIRED); }

}  // namespace norv
