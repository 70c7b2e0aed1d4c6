// The record: structure, copies, statistics.
#include "support/nets.h"
#include "support/test.h"

TEST_CASE("a network is built from gap-free sizes, everything zero") {
  NeuralNet net = RandomRecord(3, {2}, {12});
  BuildNet(net, 49, {10, 4});
  CHECK((net.Nlayers == 2 && net.LastNi() == 4 && net.SpareField == 0));
  const NetUnit &first = net.layers[0].units[9], &last = net.layers[1].units[3];
  CHECK((first.X.m == 7 && first.X.n == 7 && first.W.m == 49));
  CHECK((last.Nin == 10 && last.X.m == 10));
  for (int32_t i = 0; i < 49; ++i) CHECK(first.X.x[i] + first.W.x[i] + first.V.x[i] == 0);

  CHECK_THROWS_AS(BuildNet(net, 8, {4, -1, 4}), const char*);
  CHECK_THROWS_AS(BuildNet(net, -8, {4}), const char*);
  CHECK(net.N0 == 49);
}

TEST_CASE("a unit made new keeps only its output and its bias velocity; kinds without functions are bound to none") {
  NeuralNet net = RandomRecord(3, {2}, {12, 14});
  NetUnit& unit = net.layers[0].units[0];
  const NetUnit before = unit;
  for (const int32_t unknown : {18, -1}) {
    unit.ActivationKind = unknown;
    BindActivation(unit);
    CHECK((unit.f == before.f));
  }
  CHECK(WhyNotEvaluable(net) == nullptr);
  unit.ActivationKind = 0;
  BindActivation(unit);
  CHECK(WhyNotEvaluable(net) != nullptr);
  InitUnit(unit, 5);
  CHECK((unit.a == before.a && unit.vb == before.vb));
  CHECK((unit.b == 0 && unit.z == 0 && unit.delta == 0 && unit.W.m == 5 && !unit.f));
}

TEST_CASE("a copy for evaluation has everything but the velocities") {
  NeuralNet net = RandomRecord(49, {3, 2}, {14, 12}), copy = RandomRecord(2, {2}, {12});
  CopyNetForEvaluation(copy, net);
  CHECK(copy.layers[1].units[1].V.mn == 0);
  CHECK(copy.layers[1].units[1].W.x != net.layers[1].units[1].W.x);
  CHECK((copy.layers[0].units[1].f == net.layers[0].units[1].f));
  // With velocities of zero both are the same file.
  for (NeuralNet* each : {&net, &copy})
    for (NetLayer& layer : each->layers)
      for (NetUnit& unit : layer.units) {
        if (each == &net) unit.vb = 0;
        unit.V.dim(unit.Nin, 1);
        unit.V.fill(0);
      }
  CHECK(NetBytes(copy) == NetBytes(net));
}

TEST_CASE("weight statistics sum strictly one after another and leave out the last layer") {
  NeuralNet net;
  BuildNet(net, 2, {2, 1, 1});
  // Two ones are lost against 2^24, which a sum in another order or in double precision would keep.
  const float weights[3][2] = {{16777216.0f, 1.0f}, {1.0f, -16777216.0f}, {3.0f, 7.0f}};
  NetUnit* units[] = {&net.layers[0].units[0], &net.layers[0].units[1], &net.layers[1].units[0]};
  for (int u = 0; u < 3; ++u) std::copy_n(weights[u], 2, units[u]->W.x);
  net.layers[2].units[0].W.x[0] = net.layers[0].units[0].b = 1e9f;
  float mean = -1, std = -1;
  NetWeightStatistics(net, mean, std);
  CHECK(mean == 10.0f * (1.0f / 6.0f));
  CHECK(std == doctest::Approx(16777216.0 / std::sqrt(3.0)));

  BuildNet(net, 2, {2});
  NetWeightStatistics(net, mean, std);
  CHECK((std::isnan(mean) && std::isnan(std)));
}
