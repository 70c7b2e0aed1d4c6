// What a restoration needs of the machine's memory, estimated before it starts: whoever cannot have it is told so, and
// nobody waits for hours to be ended by the system.
#pragma once

#include <cstdint>

#include "restore/parameters.h"

namespace norv {

// Bytes that RestoreImage takes beside the image that it is given: enlarged planes, the solver's, the orientation
// field's and the terms' planes of the one plane in work, masks, lines. An upper bound that real runs come close to.
// The parameters have passed CheckRestoration, the image is not empty.
// threads: of the team.
int64_t RestorationMemory(const RestoreParameters& parameters, int32_t width, int32_t height, int32_t format,
                          int32_t threads = 1);

// The same of planes that are restored each by itself.
int64_t PlanesMemory(const RestoreParameters& parameters, int32_t width, int32_t height, int32_t planes,
                     int32_t threads = 1);

// The same of bands of `height` rows without their margins: each has planes of its own, and at most `side` of them are
// in work side by side, each by a team of `threads`. What all bands share is not in it.
int64_t BandsMemory(const RestoreParameters& parameters, int32_t width, int32_t height, int32_t format, int32_t side,
                    int32_t threads = 1);

// Throws matrix's out-of-memory message when the machine does not have so many bytes left.
void DemandMemory(int64_t bytes);

}  // namespace norv
