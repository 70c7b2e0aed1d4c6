// Modes 14 and 15: tell whoever sits there that a series of runs has ended.
#include "driver/modes.h"
#include "driver/report.h"

namespace norv {

Ending NoticeOfSeries(const Request&) {
  SayAndWait("\n\n\nDone!\nPress any key 3 times to exit.", true);
  return Ending::silent;
}

Ending Notice(const Request&) {
  SayAndWait("\nDone!\nPress any key 3 times to exit.", true);
  return Ending::silent;
}

}  // namespace norv
