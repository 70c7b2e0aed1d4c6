#include "net/forward.h"

#include "net/team_size.h"
#include "platform/assert.h"
#include "platform/team.h"

namespace norv {
namespace {

void EvaluateUnit(NetUnit& unit) {
  NORV_ASSERT(unit.f);
  unit.z = DotProduct(unit.X.x, unit.W.x, unit.Nin) + unit.b;
  unit.a = static_cast<float>(unit.f(static_cast<double>(unit.z)));
}

// The team for layer k (from 0).
int32_t TeamOf(const NeuralNet& net, size_t k, int32_t threads) {
  if (net.layers.size() == 1) return 1;
  const bool last = k + 1 == net.layers.size();
  return last && threads != 4 && net.layers[k].Ni % threads != 0 ? 1 : threads;
}

}  // namespace

float DotProduct(const float* a, const float* b, int32_t n) {
  float lanes[8] = {};
  int32_t i = 0;
  for (; i + 8 <= n; i += 8)
    for (int32_t k = 0; k < 8; ++k) lanes[k] += a[i + k] * b[i + k];
  for (; i < n; ++i) lanes[0] += a[i] * b[i];
  for (int32_t k = 1; k < 8; ++k) lanes[0] += lanes[k];
  return lanes[0];
}

void ForwardPass(NeuralNet& net, const matrix& input, int32_t threads) {
  if (!IsTeamSize(threads)) return;
  NORV_ASSERT(input.mn == net.N0);
  for (size_t k = 0; k < net.layers.size(); ++k) {
    std::vector<NetUnit>& units = net.layers[k].units;
    ParallelFor(TeamOf(net, k, threads), net.layers[k].Ni, [&](int64_t u) {
      NetUnit& unit = units[u];
      if (k == 0)
        unit.X.copy(input);
      else
        for (int32_t i = 0; i < unit.Nin; ++i) unit.X.x[i] = net.layers[k - 1].units[i].a;
      EvaluateUnit(unit);
    });
  }
}

}  // namespace norv
