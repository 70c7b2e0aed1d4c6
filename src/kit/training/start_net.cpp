#include "kit/training/start_net.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

#include "net/layouts.h"

namespace norv {
namespace {

// SplitMix64 (Steele, Lea and Flood 2014).
class Generator {
 public:
  explicit Generator(uint64_t seed) : state_(seed) {}
  // Uniform in [-1, 1).
  double Next() {
    uint64_t v = state_ += 0x9E3779B97F4A7C15u;
    v = (v ^ v >> 30) * 0xBF58476D1CE4E5B9u;
    v = (v ^ v >> 27) * 0x94D049BB133111EBu;
    v ^= v >> 31;
    return static_cast<double>(v >> 11) * 0x1p-52 - 1;
  }

 private:
  uint64_t state_;
};

// Squared gain by kind: 1 over the square of the slope at zero, twice that where half of the inputs is nearly lost.
constexpr double kSquaredGains[] = {1, 16, 16, 16, 16, 32, 32, 16, 32, 32, 32, 2, 1, 2, 2, 4, 2, 2};
static_assert(std::size(kSquaredGains) == kActivationKinds);

void FillRandom(NetUnit& unit, Generator& generator) {
  const double limit = std::sqrt(3 * kSquaredGains[unit.ActivationKind] / unit.Nin);
  for (int32_t i = 0; i < unit.Nin; ++i) unit.W.x[i] = static_cast<float>(limit * generator.Next());
}

NeuralNet Skeleton(const NetPlan& plan) {
  std::array<int32_t, kMaxLayers> sizes{};
  std::copy(plan.hidden.begin(), plan.hidden.end(), sizes.begin());
  sizes[plan.hidden.size()] = plan.factor * plan.factor;
  NeuralNet net;
  BuildNet(net, plan.inputs, sizes);
  for (size_t layer = 0; layer < net.layers.size(); ++layer)
    for (NetUnit& unit : net.layers[layer].units) {
      unit.ActivationKind = plan.kinds[layer];
      BindActivation(unit);
    }
  return net;
}

// weights[i][t]: what output i of a block takes of the source pixel t - 3 from its own, on an axis.
std::vector<std::array<double, 7>> AxisWeights(Interpolation interpolation, int32_t f) {
  constexpr int32_t kPixel = 10;  // far from both ends of an axis of 21
  const ResampleTable table = InterpolationTable(interpolation, 21, f);
  std::vector<std::array<double, 7>> weights(f, std::array<double, 7>{});
  for (int32_t i = 0; i < f; ++i) {
    const int32_t k = f * kPixel + i, start = table.start[k] - (kPixel - 3);
    for (int32_t j = 0; j < table.taps; ++j) {
      const float weight = table.weights[static_cast<size_t>(k) * table.taps + j];
      if (weight != 0) weights[i].at(start + j) = weight;
    }
  }
  return weights;
}

// The unit that answers (sum of w P - Pc) / 255 with the products of the row and column weights as w.
void FillInterpolation(NetUnit& unit, const std::array<double, 7>& down, const std::array<double, 7>& across) {
  const std::vector<Tap> taps = OrientedTaps(*FindLayout(unit.Nin), 0).first;
  for (int32_t i = 0; i < unit.Nin; ++i) {
    const auto [dy, dx] = taps[i];
    const double ownPixel = dy == 0 && dx == 0 ? 1 : 0;  // only the layout that is not centred has this tap
    unit.W.x[i] = static_cast<float>(down[dy + 3] * across[dx + 3] - ownPixel);
  }
}

// The counts of inputs of the layouts that see so many pixels around and tell one from the other.
std::string InputsThatSee(int32_t radius, const char* between) {
  std::string list;
  for (const InputLayout& layout : kLayouts)
    if (layout.radius >= radius && layout.form != ValueForm::difference)
      list += (list.empty() ? "" : between) + std::to_string(layout.inputs);
  return list;
}

}  // namespace

void ChooseKinds(NetPlan& plan, int32_t hiddenKind) {
  if (!plan.kinds.empty()) return;
  plan.kinds.assign(plan.hidden.size(), hiddenKind);
  plan.kinds.push_back(kIdentityKind);
}

std::string WhyNoNet(const NetPlan& plan) {
  if (!FindLayout(plan.inputs)) return "a layout has " + LayoutInputs() + " inputs";
  if (plan.factor != 2 && plan.factor != 4) return "the factor is 2 or 4";
  if (!FindEnlargement(plan.inputs, plan.factor * plan.factor))
    return FourfoldLayoutInputs() + " inputs go with factor 4 only";
  if (plan.hidden.size() >= kMaxLayers) return "a network has at most " + std::to_string(kMaxLayers) + " layers";
  for (const int32_t units : plan.hidden)
    if (units < 1 || units > 65536) return "a hidden layer has 1 to 65536 units";
  if (plan.kinds.size() != plan.hidden.size() + 1)
    return "there has to be one kind for every hidden layer and one for the outputs";
  static_assert(kActivationKinds == 18);
  for (const int32_t kind : plan.kinds)
    if (kind < 1 || kind >= kActivationKinds) return "a kind is 1 to " + std::to_string(kActivationKinds - 1);
  return "";
}

NeuralNet RandomNet(const NetPlan& plan) {
  NeuralNet net = Skeleton(plan);
  Generator generator(plan.seed);
  for (NetLayer& layer : net.layers)
    for (NetUnit& unit : layer.units) FillRandom(unit, generator);
  return net;
}

NetPlan LayersOf(const NeuralNet& net, const std::vector<int32_t>& hidden) {
  NetPlan plan;
  plan.inputs = net.N0;
  plan.factor = net.LastNi() == 16 ? 4 : 2;
  plan.hidden = hidden;
  for (size_t layer = 0; layer < net.layers.size(); ++layer) {
    plan.kinds.push_back(net.layers[layer].units[0].ActivationKind);
    if (hidden.empty() && layer + 1 < net.layers.size()) plan.hidden.push_back(net.layers[layer].Ni);
  }
  return plan;
}

std::string WhyNotWider(const NeuralNet& net, const NetPlan& plan) {
  if (!FindEnlargement(net.N0, net.LastNi())) return "it has no layout that enlarges";
  if (plan.hidden.size() + 1 != net.layers.size())
    return "it has " + std::to_string(net.layers.size() - 1) + " hidden layers, which stay";
  for (size_t layer = 0; layer < plan.hidden.size(); ++layer)
    if (plan.hidden[layer] < net.layers[layer].Ni)
      return "its hidden layer " + std::to_string(layer + 1) + " has " + std::to_string(net.layers[layer].Ni) +
             " units already";
  return "";
}

NeuralNet Widened(const NeuralNet& net, const NetPlan& plan) {
  NeuralNet wide = RandomNet(plan);
  for (size_t layer = 0; layer < net.layers.size(); ++layer)
    for (int32_t i = 0; i < net.layers[layer].Ni; ++i) {
      const NetUnit& from = net.layers[layer].units[i];
      NetUnit& to = wide.layers[layer].units[i];
      to.W.fill(0);
      std::copy_n(from.W.x, from.Nin, to.W.x);
      to.b = from.b;
      to.ActivationKind = from.ActivationKind;
      BindActivation(to);
    }
  return wide;
}

std::string WhyNoInterpolation(const NetPlan& plan, Interpolation interpolation) {
  const InputLayout& layout = *FindLayout(plan.inputs);
  if (layout.form == ValueForm::difference) return "differences along diagonals do not add up to an interpolation";
  if (interpolation == Interpolation::lanczos && layout.radius < 3)
    return "Lanczos needs the 7 x 7 pixels of " + InputsThatSee(3, " or ") + " inputs";
  if (layout.radius < 2) return "cubic interpolation needs the 5 x 5 pixels of 24 inputs or more";
  for (const int32_t units : plan.hidden)
    if (units < plan.factor * plan.factor)
      return "every hidden layer needs factor^2 units or more to pass the answer on";
  for (const int32_t kind : plan.kinds)
    if (kind != kIdentityKind) return "an interpolation is made of identity units: kind 12 in every layer";
  return "";
}

NeuralNet InterpolationNet(const NetPlan& plan, Interpolation interpolation) {
  NeuralNet net = RandomNet(plan);
  const auto weights = AxisWeights(interpolation, plan.factor);
  const int32_t outputs = plan.factor * plan.factor;
  for (size_t layer = 0; layer < net.layers.size(); ++layer)
    for (int32_t i = 0; i < outputs; ++i) {
      NetUnit& unit = net.layers[layer].units[i];
      unit.W.fill(0);
      if (layer == 0)
        FillInterpolation(unit, weights[i / plan.factor], weights[i % plan.factor]);
      else
        unit.W.x[i] = 1;
    }
  return net;
}

}  // namespace norv
