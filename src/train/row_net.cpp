#include "train/row_net.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "platform/assert.h"
#include "platform/team.h"
#include "train/backward.h"

namespace norv {
namespace {

int32_t Padded(int32_t n) { return (n + kTrainBlock - 1) / kTrainBlock * kTrainBlock; }

// Below so many weights one thread is done sooner: measured on two cores at 2.2 million weights, where teams took 1.1
// to 2.6 times as long.
constexpr int64_t kTeamPays = int64_t{1} << 23;

// Calls body(begin, end) on 0 .. count - 1 units, split between whole blocks of units among the threads of a team if
// the layer has so many weights that it pays.
template <typename Body>
void InTeam(int32_t threads, int64_t weights, int32_t count, const Body& body) {
  if (threads <= 1 || weights < kTeamPays) return body(0, count);
  ParallelRanges(threads, Padded(count) / kTrainBlock, [&](int64_t begin, int64_t end) {
    body(static_cast<int32_t>(begin) * kTrainBlock, std::min(static_cast<int32_t>(end) * kTrainBlock, count));
  });
}

// Sign and payload of a NaN depend on the order of a sum's operands, which every compiled level may choose: by our rule
// of same bytes at every level, all that training leaves are the same one.
float OneNan(float value) { return std::isnan(value) ? std::numeric_limits<float>::quiet_NaN() : value; }

constexpr int32_t kLogistic = 1;

// A layer of logistic units gets slopes of 38 bits (TrainKernels::activateLogistic). Whether a product with such a
// slope certainly rounds to the same float as the product with the exact slope: it is 0 or of a normal float's size,
// and not within 2^-37 of the middle between two floats.
bool IsRoundingDecided(double product) {
  constexpr uint64_t kMiddle = uint64_t{1} << 28, kWindow = uint64_t{1} << 15;
  const uint64_t rest = std::bit_cast<uint64_t>(product) & (2 * kMiddle - 1);
  const bool near = rest - (kMiddle - kWindow) < 2 * kWindow;
  return product == 0 || (std::abs(product) > 0x1p-126 && !near);
}

}  // namespace

RowNet::RowNet(NeuralNet& net, int32_t costSelection, float momentum, int32_t threads, int processors)
    : net_(net),
      costSelection_(costSelection),
      momentum_(momentum),
      threads_(threads <= processors ? threads : 1),
      update_(momentum == 0 ? TrainUpdate::plain : TrainUpdate::momentum),
      kernels_(ActiveTrainKernels()),
      lastInput_(static_cast<size_t>(net.N0)) {
  NORV_ASSERT(WhyNotEvaluable(net) == nullptr);
  int32_t inputs = net.N0;
  for (const NetLayer& layer : net.layers) {
    layers_.push_back(MakeLayer(layer, inputs, layers_.empty()));
    inputs = layer.Ni;
  }
  for (size_t k = 0; k < layers_.size(); ++k)
    Connect(layers_[k], k > 0 ? layers_[k - 1].a.get() : nullptr, k + 1 < layers_.size() ? &layers_[k + 1] : nullptr);
}

void RowNet::Connect(Layer& layer, const float* input, const Layer* above) const {
  TrainSweep& s = layer.sweep;
  s = {};
  s.W = layer.W.get();
  s.V = layer.V.get();
  s.inputs = layer.inputs;
  s.stride = layer.stride;
  s.input = input;
  s.momentum = momentum_;
  s.step = layer.step.get();
  s.bias = layer.bias.get();
  s.z = layer.z.get();
  TrainDeltas& d = layer.deltas;
  d = {};
  d.slope = layer.slope.get();
  d.momentum = momentum_;
  d.update = update_;
  d.delta = layer.delta.get();
  d.step = layer.step.get();
  d.bias = layer.bias.get();
  d.vb = layer.vb.get();
  if (layer.kinds.size() == 1 && layer.kinds[0].kind == kLogistic) d.z = layer.z.get();
  if (!above) return;
  d.W = above->W.get();
  d.V = above->V.get();
  d.a = layer.a.get();
  d.stride = above->stride;
  d.units = above->units;
  d.deltaAbove = above->delta.get();
  d.stepAbove = above->step.get();
}

RowNet::Layer RowNet::MakeLayer(const NetLayer& source, int32_t inputs, bool columns) const {
  Layer layer;
  layer.inputs = inputs;
  layer.units = source.Ni;
  layer.stride = Padded(columns ? source.Ni : inputs);
  layer.columns = columns;
  const int64_t units = Padded(source.Ni), weights = layer.stride * (columns ? int64_t{inputs} : units);
  layer.W = Zeros<float>(weights);
  if (momentum_ != 0) layer.V = Zeros<float>(weights);
  // One block more for the activations, which write whole blocks from any unit on.
  for (AlignedArray<float>* row : {&layer.bias, &layer.vb, &layer.z, &layer.a, &layer.delta, &layer.step})
    *row = Zeros<float>(units + kTrainBlock);
  layer.slope = Zeros<double>(units + kTrainBlock);
  for (int32_t u = 0; u < source.Ni; ++u) {
    const NetUnit& unit = source.units[static_cast<size_t>(u)];
    for (int32_t i = 0; i < inputs; ++i) {
      layer.W[layer.Place(u, i)] = unit.W.x[i];
      if (momentum_ != 0) layer.V[layer.Place(u, i)] = unit.V.x[i];
    }
    layer.bias[u] = unit.b;
    layer.vb[u] = unit.vb;
    if (layer.kinds.empty() || layer.kinds.back().kind != unit.ActivationKind)
      layer.kinds.push_back({u, u, unit.ActivationKind});
    ++layer.kinds.back().end;
  }
  return layer;
}

void RowNet::SetRate(float nu, float bound) {
  nu_ = nu;
  bound_ = bound;
  for (Layer& layer : layers_) {
    layer.deltas.nu = nu;
    layer.deltas.bound = bound;
  }
}

void RowNet::Sweep(const float* input) {
  Layer& first = layers_.front();
  first.sweep.update = pendingInput_ ? update_ : TrainUpdate::none;
  first.sweep.previous = pendingInput_;
  first.sweep.input = input;
  InTeam(threads_, first.Weights(), Padded(first.units),
         [&](int32_t begin, int32_t end) { kernels_.columns(first.sweep, begin, end); });
}

void RowNet::Evaluate(const Layer& layer) {
  InTeam(threads_, layer.Weights(), layer.units,
         [&](int32_t begin, int32_t end) { kernels_.rows(layer.sweep, begin, end); });
}

void RowNet::Activate(Layer& layer) {
  if (layer.deltas.z) return kernels_.activateLogistic(layer.z.get(), layer.units, layer.a.get(), layer.slope.get());
  // In rising order: what a run writes behind its end is overwritten by the next one.
  for (const KindRun& run : layer.kinds)
    kernels_.activate[run.kind](layer.z.get() + run.begin, run.end - run.begin, layer.a.get() + run.begin,
                                layer.slope.get() + run.begin);
}

void RowNet::Learn(const float* input, const float* target) {
  Sweep(input);
  Activate(layers_.front());
  for (size_t k = 1; k < layers_.size(); ++k) {
    Evaluate(layers_[k]);
    Activate(layers_[k]);
  }
  pendingInput_ = input;
  learned_ = true;
  OutputDeltas(target);
  for (size_t k = layers_.size() - 1; k-- > 0;) HiddenDeltas(layers_[k], layers_[k + 1]);
}

// The bias is updated at once, the weights by HiddenDeltas or, in a first layer, the next sweep.
void RowNet::FinishStep(Layer& layer, int32_t unit) {
  const float step = nu_ * layer.delta[unit];
  layer.step[unit] = step;
  if (update_ == TrainUpdate::plain) {
    layer.bias[unit] -= step;
  } else {
    layer.vb[unit] = momentum_ * layer.vb[unit] - step;
    layer.bias[unit] += layer.vb[unit];
  }
}

void RowNet::OutputDeltas(const float* target) {
  Layer& layer = layers_.back();
  float sampleCost = 0;
  for (int32_t u = 0; u < layer.units; ++u) {
    const OutputCost output = CostOfError(costSelection_, layer.a[u] - target[u]);
    sampleCost += output.cost;
    double product = layer.slope[u] * output.gradient;
    if (layer.deltas.z && !IsRoundingDecided(product))
      product = ActivationOf(kLogistic).df(layer.z[u]) * output.gradient;
    layer.delta[u] = ClippedDelta(product, bound_);
    FinishStep(layer, u);
  }
  net_.SampleCost = sampleCost;
  net_.Cost += sampleCost;
}

void RowNet::HiddenDeltas(Layer& layer, const Layer& above) {
  InTeam(threads_, above.Weights(), Padded(layer.units),
         [&](int32_t begin, int32_t end) { kernels_.deltas(layer.deltas, begin, end); });
}

void RowNet::Settle() {
  if (!pendingInput_) return;
  Sweep(nullptr);
  std::copy_n(pendingInput_, lastInput_.size(), lastInput_.begin());
  pendingInput_ = nullptr;
}

void RowNet::ForgetVelocities() {
  Settle();
  for (Layer& layer : layers_) {
    std::fill_n(layer.vb.get(), Padded(layer.units), 0.0f);
    if (layer.V)
      std::fill_n(layer.V.get(), layer.stride * int64_t{layer.columns ? layer.inputs : Padded(layer.units)}, 0.0f);
  }
}

void RowNet::StoreLayer(const Layer& layer, const float* input, NetLayer& target) const {
  for (int32_t u = 0; u < layer.units; ++u) {
    NetUnit& unit = target.units[static_cast<size_t>(u)];
    for (int32_t i = 0; momentum_ != 0 && i < layer.inputs; ++i) unit.V.x[i] = OneNan(layer.V[layer.Place(u, i)]);
    if (momentum_ != 0) unit.vb = OneNan(layer.vb[u]);
    if (!learned_) continue;
    for (int32_t i = 0; i < layer.inputs; ++i) unit.W.x[i] = OneNan(layer.W[layer.Place(u, i)]);
    std::transform(input, input + layer.inputs, unit.X.x, OneNan);
    unit.b = OneNan(layer.bias[u]);
    unit.z = OneNan(layer.z[u]);
    unit.a = OneNan(layer.a[u]);
    unit.delta = OneNan(layer.delta[u]);
  }
}

void RowNet::Finish() {
  Settle();
  const float* input = lastInput_.data();
  for (size_t k = 0; k < layers_.size(); ++k) {
    StoreLayer(layers_[k], input, net_.layers[k]);
    input = layers_[k].a.get();
  }
  net_.Cost = OneNan(net_.Cost);
  net_.SampleCost = OneNan(net_.SampleCost);
}

}  // namespace norv
