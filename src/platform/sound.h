// The notification sound and the request to stay awake: both may fail in silence.
#pragma once

namespace norv {

// Starts playing norv.wav of the current directory and returns at once; nothing happens without the file or a player.
// Players are sought on the path (pw-play, paplay, aplay, play); the player gets null streams.
void PlayNotification();

// Asks the system not to go to sleep during a long run. Where the platform has no such call, nothing.
void KeepAwake();

}  // namespace norv
