// The packed form against the record's own evaluation, bit for bit, at every vector level.
#include <algorithm>
#include <cmath>
#include <doctest/doctest.h>
#include <limits>

#include "net/forward.h"
#include "net/packed_net.h"
#include "support/levels.h"
#include "support/nets.h"

using namespace norv;
using namespace norv::test;

namespace {

bool SameFloat(float a, float b) { return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b)); }

// How many outputs differ between the record and the packed form, over the first `pixels` pixels of a block whose
// inputs are the plane's columns.
int Differences(const NeuralNet& record, const matrix& inputs, int32_t pixels) {
  NeuralNet plain;
  CopyNetForEvaluation(plain, record);
  const PackedNet packed(record);
  PackedNet::Scratch scratch(packed);
  for (int32_t i = 0; i < record.N0; ++i)
    for (int32_t p = 0; p < kPixelsPerBlock; ++p) scratch.Input(i)[p] = inputs.z[p][i];
  const float* outputs = packed.EvaluateBlock(scratch, pixels);
  int different = 0;
  matrix input(record.N0, 1);
  for (int32_t p = 0; p < pixels; ++p) {
    std::copy_n(inputs.z[p], record.N0, input.x);
    ForwardPass(plain, input, 1);
    for (int32_t u = 0; u < record.LastNi(); ++u)
      different += !SameFloat(outputs[u * kPixelsPerBlock + p], plain.layers.back().units[u].a);
  }
  return different;
}

matrix RandomInputs(int32_t count, unsigned seed) {
  matrix inputs = RandomPlane(count, kPixelsPerBlock, seed);
  for (int32_t i = 0; i < inputs.mn; ++i) inputs.x[i] = inputs.x[i] / 127.5f - 1;
  return inputs;
}

}  // namespace

TEST_CASE("packed evaluation has the record's bits for every number of inputs and units") {
  for (const VectorLevel level : AvailableLevels()) {
    const ForcedLevel forced(level);
    CAPTURE(NameOf(level));
    for (int32_t n = 1; n <= 100; ++n) {
      const NeuralNet net = RandomRecord(n, {n % 23 + 1, n % 9 + 1}, {14}, n);
      CHECK_MESSAGE(Differences(net, RandomInputs(n, n), kPixelsPerBlock) == 0, n, " inputs");
    }
    CHECK(Differences(RandomRecord(48, {64, 64, 4}, {14}), RandomInputs(48, 1), kPixelsPerBlock) == 0);
    CHECK(Differences(RandomRecord(5, std::vector<int32_t>(kMaxLayers, 3), {13, 4}), RandomInputs(5, 1), 17) == 0);
  }
}

TEST_CASE("units of different kinds share a layer") {
  std::vector<int32_t> all;
  for (int32_t kind = 1; kind < kActivationKinds; ++kind) all.insert(all.end(), kind % 3 + 1, kind);
  for (const VectorLevel level : AvailableLevels()) {
    const ForcedLevel forced(level);
    CHECK(Differences(RandomRecord(24, {38, 35}, all, 3), RandomInputs(24, 3), kPixelsPerBlock) == 0);
    CHECK(Differences(RandomRecord(24, {9, 9, 6}, {14, 12, 1}, 4), RandomInputs(24, 4), 33) == 0);
  }
}

TEST_CASE("any number of pixels of a block is evaluated, and the inputs stay") {
  const NeuralNet net = RandomRecord(24, {10, 4}, {6, 14, 14, 1}, 5);
  const matrix inputs = RandomInputs(24, 5);
  for (const VectorLevel level : AvailableLevels()) {
    const ForcedLevel forced(level);
    for (int32_t pixels = 1; pixels <= kPixelsPerBlock; ++pixels) CHECK(Differences(net, inputs, pixels) == 0);
  }
  const PackedNet packed(net);
  PackedNet::Scratch scratch(packed);
  for (int32_t i = 0; i < 24; ++i) std::fill_n(scratch.Input(i), kPixelsPerBlock, static_cast<float>(i));
  packed.EvaluateBlock(scratch, kPixelsPerBlock);
  for (int32_t i = 0; i < 24; ++i) CHECK(scratch.Input(i)[i] == i);
}

TEST_CASE("zeros keep their sign, infinities and NaN spread as in the record") {
  NeuralNet net = RandomRecord(17, {4}, {12}, 6);
  for (NetLayer& layer : net.layers)
    for (NetUnit& unit : layer.units) unit.b = -0.f;
  for (int32_t i = 0; i < 17; ++i) {
    net.layers[0].units[1].W.x[i] = -0.f;
    net.layers[0].units[3].W.x[i] = 1;  // products of -0 alone, in pixel 5
  }
  net.layers[0].units[2].W.x[9] = std::numeric_limits<float>::infinity();
  matrix inputs = RandomInputs(17, 6);
  inputs.z[3][2] = std::numeric_limits<float>::quiet_NaN();
  inputs.z[4][16] = -std::numeric_limits<float>::infinity();
  for (int32_t i = 0; i < 17; ++i) inputs.z[5][i] = -0.f, inputs.z[6][i] = 1e-42f;
  for (const VectorLevel level : AvailableLevels()) {
    const ForcedLevel forced(level);
    CHECK(Differences(net, inputs, kPixelsPerBlock) == 0);
  }
}
