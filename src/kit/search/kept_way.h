// A kept way of enlarging as the one that enlarges.
#pragma once

#include "kit/scale/enlarge_to_size.h"
#include "kit/search/stored_presets.h"

namespace norv {

// To this size, which is `scale` times the picture's. Throws a Failure for a network that is not there (any more).
EnlargeWay WayOfKept(const KeptWay& kept, const PictureSize& size, double scale, int32_t threads);

}  // namespace norv
