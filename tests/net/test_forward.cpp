// The plain forward pass: its sums, its teams.
#include <mutex>
#include <set>

#include "net/forward.h"
#include "support/nets.h"
#include "support/test.h"

namespace {

std::mutex guard;
std::set<std::thread::id> visitors;

double Record(double x) {
  const std::lock_guard lock(guard);
  visitors.insert(std::this_thread::get_id());
  return x;
}

}  // namespace

TEST_CASE("units keep inputs, sum and output; every team has the same bits and other thread counts do nothing") {
  for (const std::vector<int32_t>& layers : {std::vector<int32_t>{16}, {10}, {7, 10}, {9, 5, 16}}) {
    const matrix input = RandomPlane(49, 1, 3);
    NeuralNet serial = RandomRecord(49, layers, {14, 12});
    const std::string before = NetBytes(serial);
    for (const int32_t threads : {0, 2, 3, 5, 17, 32, -1}) ForwardPass(serial, input, threads);
    CHECK(NetBytes(serial) == before);
    ForwardPass(serial, input, 1);
    std::vector<float> below(input.x, input.x + 49);
    for (const NetLayer& layer : serial.layers) {
      for (const NetUnit& unit : layer.units) {
        CHECK(std::equal(below.begin(), below.end(), unit.X.x));
        CHECK(unit.z == PlainDot(unit.X, unit.W) + unit.b);
        CHECK(unit.a == static_cast<float>(unit.ActivationKind == 12 || unit.z >= 0 ? unit.z : 0.01 * unit.z));
      }
      below.clear();
      for (const NetUnit& unit : layer.units) below.push_back(unit.a);
    }
    for (const int32_t threads : {4, 8, 16}) {
      NeuralNet team = RandomRecord(49, layers, {14, 12});
      ForwardPass(team, input, threads);
      CHECK(NetBytes(team) == NetBytes(serial));
    }
  }
}

TEST_CASE("teams are exactly as large as asked for, but for a last layer that 8 or 16 do not divide") {
  struct {
    std::vector<int32_t> layers;
    int32_t layer, threads;
    size_t team;
  } const rows[] = {{{16, 10, 5}, 0, 1, 1},    {{16, 10, 5}, 0, 4, 4},  {{16, 10, 5}, 1, 8, 8},
                    {{16, 10, 5}, 1, 16, 10},  {{16, 10, 10}, 2, 4, 4}, {{16, 10, 10}, 2, 8, 1},
                    {{16, 10, 16}, 2, 16, 16}, {{16}, 0, 4, 1},         {{16}, 0, 16, 1}};
  for (const auto& [layers, layer, threads, team] : rows) {
    NeuralNet net = RandomRecord(4, layers, {12});
    for (NetUnit& unit : net.layers[layer].units) unit.f = Record;
    visitors.clear();
    ForwardPass(net, RandomPlane(4, 1, 1), threads);
    CHECK(visitors.size() == team);
  }
}
