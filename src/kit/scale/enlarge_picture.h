// Pictures enlarged by a network, the alpha plane like the others, colours multiplied by it meanwhile.
#pragma once

#include "kit/pictures/picture_rows.h"

namespace norv {

struct NeuralNet;

struct NetEnlargement {
  bool average = false;   // over the eight orientations
  bool shortcut = false;  // the network for the luminance only
  int32_t threads = 0;    // that work on it, which nothing shows of; 0: as many as the process may use processors
};

// Throws a Failure when the network does not fit enlargement.
void RequireEnlargement(const NeuralNet& net);

// The picture enlarged by the network, whose outputs decide the factor, row by row as it is asked for and in memory
// that does not grow with it: each read takes what it needs from the picture given, so that enlargements can be chained
// with each other and with what scale.h offers. Grey pictures take the shortcut, which for them is the same answer;
// they and alpha planes stay what they are. The network is not referred to afterwards. Throws a Failure when it does
// not fit enlargement, or when the result would be too large.
PictureSource EnlargedByNet(PictureSource picture, const NeuralNet& net, const NetEnlargement& how);

// All of it.
Picture EnlargeByNet(Picture picture, const NeuralNet& net, const NetEnlargement& how);

}  // namespace norv
