// A drawing of what each unit of a network's first layer looks for.
#pragma once

#include <string>

#include "kit/look/net_health.h"

namespace norv {

// SVG. A tile a unit: how much its weighted sum grows with each pixel of the neighbourhood, from blue (falls) over
// white to red (rises), each tile by its own largest; the pixel in the middle, which centred layouts take from every
// input, stands there with the sum of what they take. Where inputs have no layout: the weights in rows of cells. Dead,
// saturated and not finite units have a frame of their own. Of networks with very many weights only the first units.
std::string DrawWeightSheet(const NeuralNet& net, const NetHealth& health);

}  // namespace norv
