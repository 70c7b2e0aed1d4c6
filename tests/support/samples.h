// Training sets and networks of made-up numbers.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <string>

#include "net/neural_net.h"
#include "train/training_set.h"

namespace norv::test {

// A small generator of our own: tests must not draw from the program's.
class Noise {
 public:
  explicit Noise(uint32_t seed) : state_(seed * 2654435761u + 1) {}
  // -1 .. 1
  float operator()() {
    state_ = state_ * 1664525u + 1013904223u;
    return static_cast<float>(state_ >> 8) / static_cast<float>(1 << 23) - 1;
  }

 private:
  uint32_t state_;
};

inline TrainingSet MakeSamples(int32_t N, int32_t Nin, int32_t Ny, uint32_t seed = 1) {
  TrainingSet set;
  CreateTrainingSet(set, N, Nin, Ny);
  Noise noise(seed);
  for (int64_t i = 0; i < N * set.RecordFloats(); ++i) set.block[i] = noise();
  return set;
}

// Weights, biases and velocities between -0.3 and 0.3; kind 0 gives every unit another kind.
inline NeuralNet MakeNet(int32_t N0, const std::array<int32_t, kMaxLayers>& sizes, int32_t kind, uint32_t seed = 1) {
  NeuralNet net;
  BuildNet(net, N0, sizes);
  Noise noise(seed);
  int32_t next = 0;
  for (NetLayer& layer : net.layers)
    for (NetUnit& unit : layer.units) {
      unit.ActivationKind = kind ? kind : 1 + next++ % 17;
      BindActivation(unit);
      for (int32_t i = 0; i < unit.Nin; ++i) {
        unit.W.x[i] = 0.3f * noise();
        unit.V.x[i] = 0.3f * noise();
      }
      unit.b = 0.3f * noise();
      unit.vb = 0.3f * noise();
    }
  return net;
}

template <typename T>
std::string BytesOf(const T* values, size_t n) {
  return std::string(reinterpret_cast<const char*>(values), n * sizeof(T));
}

// The set as it stands in a file.
inline std::string FileBytes(const TrainingSet& set) {
  const int32_t header[] = {set.N, set.Nin, set.Ny};
  return BytesOf(header, 3) + BytesOf(set.records, static_cast<size_t>(set.N * set.RecordFloats()));
}

}  // namespace norv::test
