// Training sets and networks of made-up numbers.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "linear/index_sort.h"
#include "linear/random.h"
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

// The set in the order that the tool's generator gives next, the long way: keys from pairs of its numbers, sorted.
inline TrainingSet Shuffled(const TrainingSet& set, RandomGenerator& generator) {
  std::vector<float> keys;
  for (int32_t i = 0; i < set.N; ++i) {
    const int32_t low = generator.Next(), high = generator.Next();
    keys.push_back(static_cast<float>((high * 10000 + low) * 1e-8 + 5e-9));
  }
  std::vector<int32_t> order(keys.size());
  IndexSort(order.data(), keys.data(), set.N);
  TrainingSet shuffled;
  CreateTrainingSet(shuffled, set.N, set.Nin, set.Ny);
  for (int32_t j = 0; j < set.N; ++j) std::copy_n(set.Input(j), set.RecordFloats(), shuffled.Record(order[j]));
  return shuffled;
}

// A picture of values from 0 to 255.
inline matrix MakePicture(int32_t w, int32_t h, uint32_t seed = 3) {
  matrix picture(w, h);
  Noise noise(seed);
  for (int32_t i = 0; i < picture.mn; ++i) picture.x[i] = 127.5f + 127.5f * noise();
  return picture;
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
