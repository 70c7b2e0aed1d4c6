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

// In the order that Kernels::evaluateLayer reads.
void AppendTile(const NetUnit* units, int32_t count, int32_t inputs, std::vector<float>& packed) {
  const int32_t whole = inputs / 8 * 8;
  for (int32_t lane = 0; lane < 8; ++lane) {
    for (int32_t i = lane; i < whole; i += 8) AppendWeights(units, count, i, packed);
    for (int32_t i = whole; lane == 0 && i < inputs; ++i) AppendWeights(units, count, i, packed);
  }
  for (int32_t u = 0; u < kUnitsPerTile; ++u) packed.push_back(u < count ? units[u].b : 0.f);
}

}  // namespace

// A full block's rows are one row to the kernel.
void PackedNet::Activate(const Run& run, float* rows, int32_t pixels) {
  const RowFunction function = ActiveKernels().activation[run.kind];
  rows += int64_t{run.begin} * kPixelsPerBlock;
  if (pixels == kPixelsPerBlock) return function(rows, rows, int64_t{run.units} * kPixelsPerBlock);
  for (int32_t u = 0; u < run.units; ++u, rows += kPixelsPerBlock) function(rows, rows, pixels);
}

PackedNet::PackedNet(const NeuralNet& net) : inputs(net.N0), outputs(net.LastNi()) {
  NORV_ASSERT(!net.layers.empty() && !WhyNotEvaluable(net));
  int32_t layerInputs = inputs;
  for (const NetLayer& layer : net.layers) {
    PackLayer(layer, layerInputs);
    layerInputs = layer.Ni;
  }
}

void PackedNet::PackLayer(const NetLayer& layer, int32_t layerInputs) {
  Layer packed{layerInputs, layer.Ni, static_cast<int64_t>(weights.size()), {}};
  weights.reserve(weights.size() + static_cast<size_t>(PaddedUnits(layer.Ni) * (layerInputs + 1)));
  for (int32_t u = 0; u < layer.Ni; u += kUnitsPerTile)
    AppendTile(&layer.units[u], std::min(kUnitsPerTile, layer.Ni - u), layerInputs, weights);
  for (int32_t u = 0; u < layer.Ni; ++u) {
    const int32_t kind = layer.units[u].ActivationKind;
    if (packed.runs.empty() || packed.runs.back().kind != kind) packed.runs.push_back({kind, u, 0});
    ++packed.runs.back().units;
  }
  widestRows = std::max(widestRows, PaddedUnits(layer.Ni));
  layers.push_back(std::move(packed));
}

PackedNet::Scratch::Scratch(const PackedNet& net)
    : inputRows(MakeAligned<float>(static_cast<size_t>(net.inputs) * kPixelsPerBlock)) {
  std::fill_n(inputRows.get(), int64_t{net.inputs} * kPixelsPerBlock, 0.f);
  for (AlignedArray<float>& rows : layerRows) {
    rows = MakeAligned<float>(static_cast<size_t>(net.widestRows) * kPixelsPerBlock);
    std::fill_n(rows.get(), net.widestRows * kPixelsPerBlock, 0.f);
  }
}

const float* PackedNet::EvaluateBlock(Scratch& scratch, int32_t pixels) const {
  NORV_ASSERT(pixels >= 1 && pixels <= kPixelsPerBlock);
  const auto evaluateLayer = ActiveKernels().evaluateLayer;
  const float* from = scratch.inputRows.get();
  for (size_t i = 0; i < layers.size(); ++i) {
    const Layer& layer = layers[i];
    float* to = scratch.layerRows[i % 2].get();
    evaluateLayer(&weights[layer.weights], layer.inputs, layer.units, from, to, pixels);
    for (const Run& run : layer.runs) Activate(run, to, pixels);
    from = to;
  }
  return from;
}

}  // namespace norv
