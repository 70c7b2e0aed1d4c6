// The plain forward pass: its sums, its teams.
#include <algorithm>
#include <doctest/doctest.h>
#include <mutex>
#include <set>
#include <thread>

#include "net/forward.h"
#include "support/nets.h"

using namespace norv;
using namespace norv::test;

namespace {

std::mutex guard;
std::set<std::thread::id> visitors;

double Record(double x) {
  const std::lock_guard lock(guard);
  visitors.insert(std::this_thread::get_id());
  return x;
}

// How many threads evaluate the layer when the network gets `threads`.
size_t Team(std::vector<int32_t> layers, size_t layer, int32_t threads) {
  NeuralNet net = RandomRecord(4, layers, {12});
  for (NetUnit& unit : net.layers[layer].units) unit.f = Record;
  visitors.clear();
  ForwardPass(net, RandomPlane(4, 1, 1), threads);
  return visitors.size();
}

std::vector<float> Outputs(const NeuralNet& net) {
  std::vector<float> outputs;
  for (const NetUnit& unit : net.layers.back().units) outputs.push_back(unit.a);
  return outputs;
}

}  // namespace

TEST_CASE("the dot product has eight sums, the tail in the first, added in order") {
  for (int32_t n = 0; n <= 100; ++n) {
    const matrix a = RandomPlane(n, 1, n + 1), b = RandomPlane(n, 1, n + 200);
    const int32_t whole = n / 8 * 8;
    float sum = 0;
    for (int32_t lane = 0; lane < 8; ++lane) {
      float partial = 0;
      for (int32_t i = lane; i < whole; i += 8) partial += a.x[i] * b.x[i];
      for (int32_t i = whole; lane == 0 && i < n; ++i) partial += a.x[i] * b.x[i];
      sum = lane == 0 ? partial : sum + partial;
    }
    CHECK(DotProduct(a.x, b.x, n) == sum);
  }
}

TEST_CASE("units keep their inputs, weighted sum and output") {
  NeuralNet net = RandomRecord(49, {3, 2}, {14, 12});
  const matrix input = RandomPlane(49, 1, 5);
  ForwardPass(net, input, 1);
  for (const NetUnit& unit : net.layers[0].units) {
    CHECK(unit.X.m == 7);
    CHECK(std::equal(input.x, input.x + 49, unit.X.x));
    CHECK(unit.z == DotProduct(input.x, unit.W.x, 49) + unit.b);
  }
  const NetUnit &leaky = net.layers[0].units[0], &last = net.layers[1].units[1];
  const double z = leaky.z;
  CHECK(leaky.a == static_cast<float>(z >= 0 ? z : 0.01 * z));
  for (int32_t i = 0; i < 3; ++i) CHECK(last.X.x[i] == net.layers[0].units[i].a);
  CHECK(last.a == last.z);
}

TEST_CASE("every supported thread count gives the same bits and others nothing") {
  for (const std::vector<int32_t>& layers : {std::vector<int32_t>{16}, {10}, {7, 10}, {9, 5, 16}}) {
    const matrix input = RandomPlane(24, 1, 3);
    NeuralNet serial = RandomRecord(24, layers, kExactKinds);
    const std::vector<float> before = Outputs(serial);
    for (const int32_t threads : {0, 2, 3, 5, 32, -1}) ForwardPass(serial, input, threads);
    CHECK(Outputs(serial) == before);
    ForwardPass(serial, input, 1);
    CHECK(Outputs(serial) != before);
    for (const int32_t threads : {4, 8, 16}) {
      NeuralNet team = RandomRecord(24, layers, kExactKinds);
      ForwardPass(team, input, threads);
      CHECK(Outputs(team) == Outputs(serial));
    }
  }
}

TEST_CASE("teams are exactly as large as asked for, but for a last layer that 8 or 16 do not divide") {
  CHECK(Team({16, 10, 5}, 0, 1) == 1);
  CHECK(Team({16, 10, 5}, 0, 4) == 4);
  CHECK(Team({16, 10, 5}, 1, 8) == 8);
  CHECK(Team({16, 10, 5}, 1, 16) == 10);
  CHECK(Team({16, 10, 10}, 2, 4) == 4);
  CHECK(Team({16, 10, 10}, 2, 8) == 1);
  CHECK(Team({16, 10, 16}, 2, 8) == 8);
  CHECK(Team({16, 10, 16}, 2, 16) == 16);
  CHECK(Team({16}, 0, 4) == 1);
  CHECK(Team({16}, 0, 16) == 1);
}
