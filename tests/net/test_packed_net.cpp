// The packed form against the record's own evaluation, bit for bit, at every vector level.
#include "net/forward.h"
#include "net/packed_net.h"
#include "support/levels.h"
#include "support/nets.h"
#include "support/test.h"

namespace {

bool SameFloat(float a, float b) { return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b)); }

// Whether record and packed form agree on the first `pixels` pixels of a block whose inputs are the plane's rows, and
// the inputs are left alone.
bool Agree(const NeuralNet& record, const matrix& inputs, int32_t pixels = kPixelsPerBlock) {
  NeuralNet plain;
  CopyNetForEvaluation(plain, record);
  const PackedNet packed(record);
  PackedNet::Scratch scratch(packed);
  for (int32_t i = 0; i < record.N0; ++i)
    for (int32_t p = 0; p < kPixelsPerBlock; ++p) scratch.Input(i)[p] = inputs.z[p][i];
  const float* outputs = packed.EvaluateBlock(scratch, pixels);
  bool agree = true;
  matrix input(record.N0, 1);
  for (int32_t p = 0; p < pixels; ++p) {
    for (int32_t i = 0; i < record.N0; ++i) agree = agree && SameFloat(scratch.Input(i)[p], inputs.z[p][i]);
    std::copy_n(inputs.z[p], record.N0, input.x);
    ForwardPass(plain, input, 1);
    for (int32_t u = 0; u < record.LastNi(); ++u)
      agree = agree && SameFloat(outputs[u * kPixelsPerBlock + p], plain.layers.back().units[u].a);
  }
  return agree;
}

matrix RandomInputs(int32_t count, unsigned seed) { return RandomPlane(count, kPixelsPerBlock, seed, -1, 1); }

}  // namespace

TEST_CASE("packed evaluation has the record's bits for every number of inputs, units, pixels and mixture of kinds") {
  std::vector<int32_t> all;
  for (int32_t kind = 1; kind < kActivationKinds; ++kind) all.insert(all.end(), kind % 3 + 1, kind);
  const NeuralNet mixed = RandomRecord(24, {10, 4}, {6, 14, 14, 1}, 5);
  for (const VectorLevel level : AvailableLevels()) {
    const ForcedLevel forced(level);
    CAPTURE(NameOf(level));
    for (int32_t n = 1; n <= 100; ++n)
      CHECK_MESSAGE(Agree(RandomRecord(n, {n % 23 + 1, n % 9 + 1}, {14}, n), RandomInputs(n, n)), n, " inputs");
    CHECK(Agree(RandomRecord(48, {64, 64, 4}, {14}), RandomInputs(48, 1)));
    CHECK(Agree(RandomRecord(5, std::vector<int32_t>(kMaxLayers, 3), {13, 4}), RandomInputs(5, 1), 17));
    CHECK(Agree(RandomRecord(24, {38, 35}, all, 3), RandomInputs(24, 3)));
    for (int32_t pixels = 1; pixels <= kPixelsPerBlock; ++pixels) CHECK(Agree(mixed, RandomInputs(24, 5), pixels));
  }
}

TEST_CASE("zeros keep their sign, infinities and NaN spread as in the record") {
  NeuralNet net = RandomRecord(17, {4}, {12}, 6);
  for (NetUnit& unit : net.layers[0].units) unit.b = -0.f;
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
    CHECK(Agree(net, inputs));
  }
}
