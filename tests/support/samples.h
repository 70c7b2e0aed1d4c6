// Training sets of made-up numbers.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "linear/index_sort.h"
#include "linear/random.h"
#include "support/random_plane.h"
#include "support/scratch.h"
#include "train/training_set.h"

namespace norv::test {

inline TrainingSet MakeSamples(int32_t N, int32_t Nin, int32_t Ny, uint32_t seed = 1) {
  TrainingSet set;
  CreateTrainingSet(set, N, Nin, Ny);
  const matrix values = RandomPlane(Nin + Ny, N, seed, -1, 1);
  std::copy_n(values.x, values.mn, set.block.get());
  return set;
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

// The set as it stands in a file.
inline std::string FileBytes(const TrainingSet& set) {
  return Int32Bytes({set.N, set.Nin, set.Ny}) + BytesOf(set.records, static_cast<size_t>(set.N * set.RecordFloats()));
}

}  // namespace norv::test
