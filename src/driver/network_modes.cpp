// Modes 10 and 13: enlargement by a network, and what its weights are like.
#include "driver/modes.h"
#include "platform/console.h"

namespace norv {

Ending EnlargeByNetwork(const Request& request) {
  const Arguments& arguments = request.arguments;
  const int32_t average = arguments.Integer(2), threads = arguments.Integer(3), shortcut = arguments.Integer(4);
  Say("\nNeural Net Enlargement\n\nShortcut = %d, Average = %d, Threads = %d", shortcut, average, threads);
  return Ending::unavailable;
}

Ending ReportNetStatistics(const Request&) { return Ending::unavailable; }

}  // namespace norv
