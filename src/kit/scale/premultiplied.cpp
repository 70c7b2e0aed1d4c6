#include "kit/scale/premultiplied.h"

#include <algorithm>
#include <cmath>

#include "kit/pictures/picture.h"

namespace norv {
namespace {

// How far from 255 a plane of 255 may be after scaling: networks leave the most.
constexpr float kOpaqueWithin = 0.25f;
// Alpha below which a quotient says more of rounding than of colour.
constexpr float kSeen = 8;

}  // namespace

void Premultiply(Picture& picture) {
  if (!picture.HasAlpha()) return;
  const float* alpha = picture.Alpha().x;
  for (int32_t k = 0; k < picture.Colours(); ++k) {
    float* colour = picture.plane[k].x;
    for (int32_t i = 0; i < picture.plane[k].mn; ++i)
      colour[i] = static_cast<float>(double{colour[i]} * alpha[i] / 255);
  }
}

void Unpremultiply(Picture& picture) {
  if (!picture.HasAlpha()) return;
  const float clear = picture.bits == 8 ? 0.5f : 0.5f / 257;
  float* alpha = picture.Alpha().x;
  for (int64_t i = 0; i < picture.Alpha().mn; ++i) {
    if (std::abs(alpha[i] - 255) <= kOpaqueWithin) {
      alpha[i] = 255;
    } else {
      const double share = alpha[i] < clear ? 0 : 255.0 / alpha[i];
      const bool beyond = picture.bits == 32 && alpha[i] >= kSeen;
      for (int32_t k = 0; k < picture.Colours(); ++k) {
        const double colour = picture.plane[k].x[i] * share;
        picture.plane[k].x[i] = static_cast<float>(beyond ? colour : std::clamp(colour, 0.0, 255.0));
      }
    }
    alpha[i] = std::clamp(alpha[i], 0.0f, 255.0f);
  }
}

}  // namespace norv
