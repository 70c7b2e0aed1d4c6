// Pictures enlarged to any size: by networks, one after another, or by interpolation.
#pragma once

#include <string>

#include "kit/models/network_plan.h"
#include "kit/scale/enlarge_picture.h"
#include "kit/scale/resize.h"

namespace norv {

class Destination;

// Throws a Failure for a file that is no network.
NeuralNet LoadNetwork(const std::string& path);
// How many times the network in a file enlarges. Throws a Failure for one that does not.
int32_t FactorOfNetwork(const std::string& path);

// The plan's networks one after another, then the reduction to the size, which is at least nearly the picture's own.
void EnlargeByNetworks(PictureSource picture, const NetworkPlan& plan, const NetEnlargement& how,
                       const PictureSize& size, const Destination& out);

// By a filter alone.
void EnlargeByFilter(PictureSource picture, ResizeFilter filter, const PictureSize& size, const Destination& out);

}  // namespace norv
