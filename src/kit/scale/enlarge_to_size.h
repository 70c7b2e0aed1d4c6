// Pictures enlarged to any size: by networks, one after another, or by interpolation.
#pragma once

#include <string>

#include "kit/formats/encoding.h"
#include "kit/models/network_plan.h"
#include "kit/scale/enlarge_picture.h"
#include "kit/scale/resize.h"

namespace norv {

// Throws a Failure for a file that is no network.
NeuralNet LoadNetwork(const std::string& path);
// How many times the network in a file enlarges. Throws a Failure for one that does not.
int32_t FactorOfNetwork(const std::string& path);

// The plan's networks one after another, then the reduction to the size, which is at least nearly the picture's own.
// Into the file of that name (CreateImage), which is begun before any work.
void EnlargeByNetworks(PictureSource picture, const NetworkPlan& plan, const NetEnlargement& how,
                       const PictureSize& size, const std::string& out, const WriteChoice& choice);

// By a filter alone.
void EnlargeByFilter(PictureSource picture, ResizeFilter filter, const PictureSize& size, const std::string& out,
                     const WriteChoice& choice);

}  // namespace norv
