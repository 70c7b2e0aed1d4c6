// What a run says about its time and its threads.
#pragma once

#include <cstdint>
#include <string>

namespace norv {

// "\n%.2f secs, %.2f mins., %.2f hrs., %.2f days" of a number of milliseconds. The seconds are formed in single
// precision, the rest from them in double: the last digit is part of what readers of our output expect.
std::string TimeMessage(int32_t milliseconds);

// The time message measured from a value of Clock().
void SayElapsed(int32_t start);

// The time message, then "\nDone!": the end of the modes that have no ending of their own.
void SayEndReport(int32_t start);

// The thread count to use: the processor count, with a message, when more are asked for; otherwise as asked for, 0 and
// less included.
int32_t ClampThreads(int32_t threads, int32_t processors);

// The same for the bit images, where a count that stands is said too.
int32_t ClampBitThreads(int32_t threads, int32_t processors);

// The ending of a run that somebody waits for: the message, the notification sound if asked for, three key presses.
void SayAndWait(const char* message, bool sound);

// The ending of a run that could not be done: the message, one key press.
void SayAndWaitForOneKey(const std::string& message);

}  // namespace norv
