// Pictures made smaller and larger, plane by plane, the alpha plane like the others.
#pragma once

#include "kit/picture.h"
#include "kit/start_net.h"

namespace norv {

// By the integer factor with the reduction filter of a ShrinkOrder, cropped at the right and below to a multiple of the
// factor first. Throws a Failure for an unknown order and for a picture smaller than the factor.
Picture ShrinkPicture(const Picture& picture, int32_t factor, int32_t shrinkOrder);

// Every pixel repeated factor x factor times.
Picture RepeatPixels(const Picture& picture, int32_t factor);

Picture InterpolatePicture(const Picture& picture, int32_t factor, Interpolation interpolation);

struct NetEnlargement {
  bool average = false;   // over the eight orientations
  bool shortcut = false;  // the network for the luminance only
  int32_t threads = 1;    // 1, 4, 8 or 16 bands
};

// By the network, whose outputs decide the factor. A picture of too few rows for the bands gets one. Grey pictures take
// the shortcut, which for them is the same answer. Throws a Failure when the network does not fit enlargement.
Picture EnlargeByNet(Picture picture, const NeuralNet& net, NetEnlargement how);

}  // namespace norv
