// .fdib files enlarged by a network, in memory that does not grow with the picture where the request allows it.
#pragma once

#include <string>

#include "net/neural_net.h"

namespace norv {

// What loading `from`, NetEnlargeImage() and saving to `to` give, the mask carried along as it is. One thread and
// bands work in strips (stripRows: as in NetEnlargeRows()) and hold a few of the picture's rows for every thread; pipes
// and odd requests hold the whole picture. A source that cannot be opened is an empty image; a destination that cannot
// be written keeps its old file; the reason is on standard error either way. Throws matrix's out-of-memory message
// before any work when there are more pixels than 32 bits can count, and the reason when the network would be evaluated
// and cannot be.
void NetEnlargeFile(const std::string& from, const std::string& to, const NeuralNet& net, bool shortcut, bool average,
                    int32_t threads, int32_t stripRows = 0);

}  // namespace norv
