// Modes 0 to 5: restoration of float images and of bit images.
#include "driver/modes.h"
#include "driver/report.h"

namespace norv {

Ending RestoreWholeImage(const Request&) { return Ending::unavailable; }

Ending RestoreImageInBands(const Request& request) {
  ClampThreads(request.threads, request.processors);
  return Ending::unavailable;
}

Ending RestoreToBitImage(const Request&) { return Ending::unavailable; }

Ending RestoreInBandsThenProcessBits(const Request& request) {
  ClampThreads(request.threads, request.processors);
  return Ending::unavailable;
}

Ending ProcessBitsInBands(const Request& request) {
  ClampBitThreads(request.threads, request.processors);
  return Ending::unavailable;
}

Ending ProcessWholeBits(const Request&) { return Ending::unavailable; }

}  // namespace norv
