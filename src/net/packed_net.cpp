#include "net/packed_net.h"

#include <algorithm>

#include "platform/assert.h"

namespace norv {

namespace {

// Output rows of a layer: whole tiles.
int64_t PaddedUnits(int64_t units) { return (units + kUnitsPerTile - 1) / kUnitsPerTile * kUnitsPerTile; }

// Appends the weights i of a tile's units; units beyond the layer count as all zero.
void AppendWeights(const NetUnit* units, int32_t count, int32_t i, std::vector<float>& packed) {
  for (int32_t u = 0; u < kUnitsPerTile; ++u) packed.push_back(u < count ? units[u].W.x[i] : 0.f);
}

// The weights of one tile, in the order in which EvaluateKernels::evaluateLayer reads them.
void AppendTile(const NetUnit* units, int32_t count, int32_t inputs, std::vector<float>& packed) {
  const int32_t whole = inputs / 8 * 8;
  for (int32_t lane = 0; lane < 8; ++lane) {
    for (int32_t i = lane; i < whole; i += 8) AppendWeights(units, count, i, packed);
    for (int32_t i = whole; lane == 0 && i < inputs; ++i) AppendWeights(units, count, i, packed);
  }
  for (int32_t u = 0; u < kUnitsPerTile; ++u) packed.push_back(u < count ? units[u].b : 0.f);
}

}  // namespace

// Rows lie kPixelsPerBlock floats apart. Those of a full block therefore have no gap between them, and one call does
// them all; of a shorter block only the first pixels of each row are there to be activated.
void PackedNet::Activate(const Run& run, float* rows, int32_t pixels) {
  const RowFunction function = ActiveEvaluateKernels().activation[run.kind];
  rows += int64_t{run.begin} * kPixelsPerBlock;
  if (pixels == kPixelsPerBlock) return function(rows, rows, int64_t{run.units} * kPixelsPerBlock);
  for (int32_t u = 0; u < run.units; ++u, rows += kPixelsPerBlock) function(rows, rows, pixels);
}

PackedNet::PackedNet(const NeuralNet& net) : inputs_(net.N0), outputs_(net.LastNi()) {
  NORV_ASSERT(!net.layers.empty() && !WhyNotEvaluable(net));
  int32_t layerInputs = inputs_;
  for (const NetLayer& layer : net.layers) {
    PackLayer(layer, layerInputs);
    layerInputs = layer.Ni;
  }
}

void PackedNet::PackLayer(const NetLayer& layer, int32_t layerInputs) {
  Layer packed{layerInputs, layer.Ni, static_cast<int64_t>(weights_.size()), {}};
  weights_.reserve(weights_.size() + static_cast<size_t>(PaddedUnits(layer.Ni) * (layerInputs + 1)));
  for (int32_t u = 0; u < layer.Ni; u += kUnitsPerTile)
    AppendTile(&layer.units[u], std::min(kUnitsPerTile, layer.Ni - u), layerInputs, weights_);
  for (int32_t u = 0; u < layer.Ni; ++u) {
    const int32_t kind = layer.units[u].ActivationKind;
    if (packed.runs.empty() || packed.runs.back().kind != kind) packed.runs.push_back({kind, u, 0});
    ++packed.runs.back().units;
  }
  widestRows_ = std::max(widestRows_, PaddedUnits(layer.Ni));
  layers_.push_back(std::move(packed));
}

PackedNet::Scratch::Scratch(const PackedNet& net)
    : inputRows_(MakeAligned<float>(static_cast<size_t>(net.inputs_) * kPixelsPerBlock)) {
  std::fill_n(inputRows_.get(), int64_t{net.inputs_} * kPixelsPerBlock, 0.f);
  for (AlignedArray<float>& rows : layerRows_) {
    rows = MakeAligned<float>(static_cast<size_t>(net.widestRows_) * kPixelsPerBlock);
    std::fill_n(rows.get(), net.widestRows_ * kPixelsPerBlock, 0.f);
  }
}

const float* PackedNet::EvaluateBlock(Scratch& scratch, int32_t pixels) const {
  NORV_ASSERT(pixels >= 1 && pixels <= kPixelsPerBlock);
  const auto evaluateLayer = ActiveEvaluateKernels().evaluateLayer;
  const float* from = scratch.inputRows_.get();
  for (size_t i = 0; i < layers_.size(); ++i) {
    const Layer& layer = layers_[i];
    float* to = scratch.layerRows_[i % 2].get();
    evaluateLayer(&weights_[layer.weights], layer.inputs, layer.units, from, to, pixels);
    for (const Run& run : layer.runs) Activate(run, to, pixels);
    from = to;
  }
  return from;
}

}  // namespace norv
