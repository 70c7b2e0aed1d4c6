// Pictures made smaller and larger, plane by plane, the alpha plane like the others.
#pragma once

#include "kit/pictures/picture.h"
#include "kit/training/start_net.h"

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

// Whether a picture of this size is cut into bands, which takes the whole of it in memory.
bool GoesInBands(const PictureShape& shape, const NetEnlargement& how);

// The same pixels as EnlargeByNet() on one thread gives, row by row into the file of that name (CreateImage).
// stripRows: as in NetEnlargeRows().
void EnlargeRowsByNet(std::unique_ptr<PictureReader> picture, const NeuralNet& net, const NetEnlargement& how,
                      const std::string& out, const WriteChoice& choice, int32_t stripRows = 0);

}  // namespace norv
