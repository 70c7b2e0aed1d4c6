// What the system does at the end of a run that comes from outside, behind platform/interrupt.h.
#pragma once

namespace norv {

// From now on every such end that this process can see coming asks OnlyNoted() where it is a wish to stop, and calls
// RemoveScratchFiles() before it ends the process as it would have without us.
void InstallHandlers();

// May be called at any instant, in a handler too.
void RemoveInHandler(const char* path);

// True: somebody watches for a wish to stop, and this is the first one; the run goes on.
bool OnlyNoted();
void RemoveScratchFiles();

// The line for standard error with which a wish to stop ends the process, exit code kInterrupted; null: by the signal.
const char* LastWords();
inline constexpr int kInterrupted = 130;

}  // namespace norv
