#include "kit/pictures/picture.h"

namespace norv {

Picture::Picture(int32_t width, int32_t height, int32_t newChannels, int32_t newBits)
    : channels(newChannels), bits(newBits) {
  for (int32_t k = 0; k < channels; ++k) plane[k].dim(width, height);
}

}  // namespace norv
