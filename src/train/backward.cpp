#include "train/backward.h"

#include "net/team_size.h"
#include "platform/team.h"
#include "simd/math/math.h"

namespace norv {
namespace {

// Team size for a layer: 4 threads always, 8 or 16 only when they divide its units evenly.
int TeamFor(int32_t threads, int32_t units) {
  return threads == 4 || (threads > 4 && units % threads == 0) ? threads : 1;
}

void OutputDeltas(NeuralNet& net, const float* target, int32_t costSelection, float bound) {
  net.SampleCost = 0;
  if (net.layers.empty()) return;
  for (NetUnit& unit : net.layers.back().units) {
    const OutputCost output = CostOfError(costSelection, unit.a - *target++);
    net.SampleCost += output.cost;
    unit.delta = ClippedDelta(unit.df(unit.z) * output.gradient, bound);
  }
  net.Cost += net.SampleCost;
}

void HiddenDeltas(NetLayer& layer, const NetLayer& next, float bound, int team) {
  ParallelFor(team, layer.Ni, [&](int64_t i) {
    float sum = 0;
    for (const NetUnit& unit : next.units) sum += unit.W.x[i] * unit.delta;
    NetUnit& unit = layer.units[static_cast<size_t>(i)];
    unit.delta = ClippedDelta(unit.df(unit.z) * sum, bound);
  });
}

void PlainStep(NetUnit& unit, float nu) {
  const float step = nu * unit.delta;
  unit.b -= step;
  const float scale = -step;
  for (int32_t i = 0; i < unit.Nin; ++i) unit.W.x[i] += scale * unit.X.x[i];
}

void MomentumStep(NetUnit& unit, float nu, float momentum) {
  const float step = nu * unit.delta;
  unit.vb = momentum * unit.vb - step;
  unit.b += unit.vb;
  const float scale = -step;
  for (int32_t i = 0; i < unit.Nin; ++i) {
    unit.V.x[i] *= momentum;
    unit.V.x[i] += scale * unit.X.x[i];
    unit.W.x[i] += unit.V.x[i];
  }
}

}  // namespace

OutputCost LogarithmicCost(float e) {
  const float argument = e * e + 1;
  return {static_cast<float>(Log(argument)), 2 * e / argument};
}

void BackPropagate(NeuralNet& net, const float* target, int32_t costSelection, float bound, int32_t threads) {
  OutputDeltas(net, target, costSelection, bound);
  if (!IsTeamSize(threads) || net.layers.empty()) return;
  for (size_t k = net.layers.size() - 1; k-- > 0;)
    HiddenDeltas(net.layers[k], net.layers[k + 1], bound, TeamFor(threads, net.layers[k].Ni));
}

void UpdateWeights(NeuralNet& net, float nu, float momentum, int32_t threads) {
  if (!IsTeamSize(threads)) return;
  for (NetLayer& layer : net.layers)
    ParallelFor(TeamFor(threads, layer.Ni), layer.Ni, [&](int64_t i) {
      NetUnit& unit = layer.units[static_cast<size_t>(i)];
      if (momentum == 0)
        PlainStep(unit, nu);
      else
        MomentumStep(unit, nu, momentum);
    });
}

void ResetMomentum(NeuralNet& net) {
  for (NetLayer& layer : net.layers)
    for (NetUnit& unit : layer.units) {
      unit.vb = 0;
      unit.V.fill(0);
    }
}

}  // namespace norv
