#include "net/neural_net.h"

#include <algorithm>
#include <cmath>

namespace norv {
namespace {

constexpr int32_t kSquareInputs = 49;  // units with that many inputs keep them as a 7 x 7 matrix
constexpr int32_t kSquareSide = 7;

// fold(w) for every weight of all layers but the last, in layer, unit and element order.
template <typename Fold>
void ForHiddenWeights(const NeuralNet& net, const Fold& fold) {
  for (size_t k = 0; k + 1 < net.layers.size(); ++k)
    for (const NetUnit& unit : net.layers[k].units)
      for (int32_t i = 0; i < unit.W.mn; ++i) fold(unit.W.x[i]);
}

}  // namespace

void BuildNet(NeuralNet& net, int32_t N0, const std::array<int32_t, kMaxLayers>& sizes) {
  if (const char* problem = WhyNotBuildable({0, N0, sizes})) throw problem;
  ClearNet(net);
  net.N0 = N0;
  net.N = sizes;
  net.Nlayers = static_cast<int32_t>(std::count_if(sizes.begin(), sizes.end(), [](int32_t Ni) { return Ni > 0; }));
  net.layers.resize(net.Nlayers);
  for (int32_t k = 0; k < net.Nlayers; ++k) {
    net.layers[k].Ni = sizes[k];
    net.layers[k].units.resize(sizes[k]);
    for (NetUnit& unit : net.layers[k].units) InitUnit(unit, k == 0 ? N0 : sizes[k - 1]);
  }
}

void ClearNet(NeuralNet& net) { net = NeuralNet(); }

void CopyNetForEvaluation(NeuralNet& copy, const NeuralNet& net) {
  copy = net;
  for (NetLayer& layer : copy.layers)
    for (NetUnit& unit : layer.units) {
      unit.V.freemem();
      unit.vb = 0;
    }
}

void InitUnit(NetUnit& unit, int32_t nin) {
  for (matrix* part : {&unit.X, &unit.W, &unit.V}) part->freemem();
  unit.ActivationKind = 0;
  unit.b = unit.z = unit.delta = 0;
  unit.f = unit.df = nullptr;
  unit.Nin = nin;
  nin == kSquareInputs ? unit.X.dim(kSquareSide, kSquareSide) : unit.X.dim(nin, 1);
  unit.W.dim(nin, 1);
  unit.V.dim(nin, 1);
  for (matrix* part : {&unit.X, &unit.W, &unit.V}) part->fill(0);
}

void BindActivation(NetUnit& unit) {
  if (unit.ActivationKind < 0 || unit.ActivationKind >= kActivationKinds) return;
  const Activation& activation = ActivationOf(unit.ActivationKind);
  unit.f = activation.f;
  unit.df = activation.df;
}

const char* WhyLayerNotEvaluable(const NetLayer& layer) {
  const auto lacksActivation = [](const NetUnit& unit) { return !unit.f || !unit.df; };
  return std::any_of(layer.units.begin(), layer.units.end(), lacksActivation)
             ? "a unit of the network has no activation"
             : nullptr;
}

const char* WhyNotEvaluable(const NeuralNet& net) {
  for (const NetLayer& layer : net.layers)
    if (const char* reason = WhyLayerNotEvaluable(layer)) return reason;
  return nullptr;
}

void NetWeightStatistics(const NeuralNet& net, float& mean, float& std) {
  int64_t count = 0;
  float sum = 0, squares = 0;
  ForHiddenWeights(net, [&](float w) { sum += w, ++count; });
  const float share = 1.0f / static_cast<float>(count);
  mean = sum * share;
  ForHiddenWeights(net, [&](float w) { squares += (w - mean) * (w - mean); });
  std = std::sqrt(squares * share);
}

}  // namespace norv
