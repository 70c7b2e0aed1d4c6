// A picture drawn by arithmetic: what enlargement and restoration get wrong, side by side.
#pragma once

#include "kit/pictures/picture_rows.h"

namespace norv {

// An RGB picture of slanted edges, strokes like text, discs, a zone plate, shading, and bars. The finest
// patterns are what half the size can just hold. Each pixel is the mean over its area. Rows are drawn as they are asked
// for, on all processors. The same bytes on every machine.
PictureSource DrawTestCard(int32_t width, int32_t height);

}  // namespace norv
