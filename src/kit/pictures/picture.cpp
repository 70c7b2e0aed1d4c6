#include "kit/pictures/picture.h"

#include <algorithm>

namespace norv {

Picture::Picture(int32_t width, int32_t height, int32_t newChannels, int32_t newBits)
    : channels(newChannels), bits(newBits) {
  for (int32_t k = 0; k < channels; ++k) plane[k].dim(width, height);
}

void CopyPart(const Picture& from, int32_t first, int32_t rows, Picture& to, int32_t at) {
  const int64_t width = to.Width();
  for (int32_t k = 0; k < to.channels; ++k)
    std::copy_n(from.plane[k].x + width * first, width * rows, to.plane[k].x + width * at);
}

}  // namespace norv
