// Pictures enlarged by a network, the alpha plane like the others, colours multiplied by it meanwhile.
#pragma once

#include <string>

#include "kit/formats/encoding.h"
#include "kit/pictures/picture_rows.h"

namespace norv {

struct NeuralNet;

struct NetEnlargement {
  bool average = false;   // over the eight orientations
  bool shortcut = false;  // the network for the luminance only
  int32_t bands = 1;      // 1, 4, 8 or 16, all at the same time
};

// Throws a Failure when the network does not fit enlargement.
void RequireEnlargement(const NeuralNet& net);

// By the network, whose outputs decide the factor. A picture of too few rows for the bands gets one. Grey pictures take
// the shortcut, which for them is the same answer. Throws a Failure when the network does not fit enlargement.
Picture EnlargeByNet(Picture picture, const NeuralNet& net, NetEnlargement how);

// Whether a picture of this size is cut into bands, which takes the whole of it in memory.
bool GoesInBands(const PictureShape& shape, const NetEnlargement& how);

// The same pixels as EnlargeByNet() in one band gives, row by row into the file of that name (CreateImage).
// stripRows: as in NetEnlargeRows().
void EnlargeRowsByNet(PictureSource picture, const NeuralNet& net, const NetEnlargement& how, const std::string& out,
                      const WriteChoice& choice, int32_t stripRows = 0);

}  // namespace norv
