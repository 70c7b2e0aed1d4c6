// Networks of random values for tests.
#pragma once

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "net/net_file.h"
#include "support/random_plane.h"
#include "support/scratch.h"

namespace norv::test {

// Kinds whose functions are plain arithmetic, so that nothing depends on how exp or log are rounded.
inline const std::vector<int32_t> kExactKinds = {4, 5, 6, 7, 9, 12, 13, 14, 15};

inline const std::vector<int32_t> kAllKinds = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17};

// Every field of every unit is random; unit u of a layer has kind kinds[u mod their number].
inline NeuralNet RandomRecord(int32_t N0, const std::vector<int32_t>& layers, const std::vector<int32_t>& kinds,
                              unsigned seed = 1) {
  std::mt19937 random(seed);
  std::array<int32_t, kMaxLayers> sizes{};
  std::copy(layers.begin(), layers.end(), sizes.begin());
  NeuralNet net;
  BuildNet(net, N0, sizes);
  net.SpareField = 77;
  net.Cost = 0.5f;
  net.SampleCost = 0.25f;
  for (NetLayer& layer : net.layers)
    for (size_t u = 0; u < layer.units.size(); ++u) {
      NetUnit& unit = layer.units[u];
      std::normal_distribution<float> value(0, 1 / std::sqrt(static_cast<float>(unit.Nin) + 1));
      for (matrix* part : {&unit.X, &unit.W, &unit.V})
        for (int32_t i = 0; i < part->mn; ++i) part->x[i] = value(random);
      for (float* field : {&unit.b, &unit.z, &unit.a, &unit.delta, &unit.vb}) *field = value(random);
      unit.ActivationKind = kinds[u % kinds.size()];
      BindActivation(unit);
    }
  return net;
}

// The network as it stands in a file.
inline std::string NetBytes(const NeuralNet& net) {
  const ScratchFolder folder;
  SaveNet(net, folder / "net", Folder::asGiven);
  return ReadBytes(folder / "net");
}

}  // namespace norv::test
