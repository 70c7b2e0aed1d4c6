// Which networks make a picture so many times larger, one after another.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kit/models/catalogue.h"

namespace norv {

struct NetworkPlan {
  std::vector<Model> passes;  // at least one; what they enlarge beyond the scale has to be reduced again
  std::string why;            // in words

  // "x2-48", "x2-48 twice", "x4-48 and x2-48".
  std::string Names() const;
};

// The best of the networks that take this way by themselves for such a picture, and as few of them as reach the scale;
// networks without a row in their table stand in where there are no others. Nothing without networks.
std::optional<NetworkPlan> PlanNetworks(const std::vector<Model>& models, NetworkWay way, const PictureNature& nature,
                                        double scale);

// The same network as often as it takes.
NetworkPlan PlanNetwork(const Model& model, double scale);

}  // namespace norv
