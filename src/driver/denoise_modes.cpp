// Modes 6 and 7: denoising.
#include "driver/modes.h"

namespace norv {

Ending DenoiseByComponents(const Request&) { return Ending::unavailable; }

Ending DenoiseByGroups(const Request&) { return Ending::unavailable; }

}  // namespace norv
