// Networks to start from: interpolations equal the resampler, random ones are scaled and repeatable.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <doctest/doctest.h>

#include "kit/training/start_net.h"
#include "net/enlarge.h"
#include "net/forward.h"
#include "net/layouts.h"
#include "support/random_plane.h"

using namespace norv;

namespace {

NetPlan PlanOf(int32_t inputs, int32_t factor, std::vector<int32_t> hidden, int32_t kind) {
  NetPlan plan;
  plan.inputs = inputs;
  plan.factor = factor;
  plan.kinds.assign(hidden.size() + 1, kind);
  plan.hidden = std::move(hidden);
  return plan;
}

// The largest distance between the network's blocks and the resampled plane, away from the edges.
double InteriorError(const NetPlan& plan, Interpolation interpolation) {
  constexpr int32_t kMargin = 4;
  NeuralNet net = InterpolationNet(plan, interpolation);
  const int32_t f = plan.factor;
  const matrix plane = test::RandomPlane(19, 15, 7);
  matrix expected, input(net.layers[0].units[0].X);
  ResampleSeparable(plane, expected, InterpolationTable(interpolation, 19, f),
                    InterpolationTable(interpolation, 15, f));
  const InputLayout& layout = *FindLayout(plan.inputs);
  const TapOffsets taps = OrientedOffsets(layout, 0, plane.m);
  double worst = 0;
  for (int32_t r = kMargin; r < plane.n - kMargin; ++r)
    for (int32_t c = kMargin; c < plane.m - kMargin; ++c) {
      GatherInputs(layout, taps, &plane.z[r][c], input.x);
      ForwardPass(net, input, 1);
      for (int32_t i = 0; i < f * f; ++i) {
        const double got = 255.0 * net.layers.back().units[i].a + plane.z[r][c];
        worst = std::max(worst, std::abs(got - expected.z[f * r + i / f][f * c + i % f]));
      }
    }
  return worst;
}

}  // namespace

TEST_CASE("an interpolating network answers what the resampler makes of the plane") {
  for (const int32_t f : {2, 4})
    for (const std::vector<int32_t>& hidden : {std::vector<int32_t>{}, {16}, {40, 20}}) {
      CAPTURE(f);
      CAPTURE(hidden.size());
      CHECK(InteriorError(PlanOf(48, f, hidden, kIdentityKind), Interpolation::lanczos) < 2e-3);
      CHECK(InteriorError(PlanOf(48, f, hidden, kIdentityKind), Interpolation::cubic) < 2e-3);
      CHECK(InteriorError(PlanOf(24, f, hidden, kIdentityKind), Interpolation::cubic) < 2e-3);
    }
  CHECK(InteriorError(PlanOf(49, 4, {}, kIdentityKind), Interpolation::lanczos) < 2e-3);
  CHECK(InteriorError(PlanOf(49, 4, {16}, kIdentityKind), Interpolation::cubic) < 2e-3);
}

TEST_CASE("the cubic table reproduces every quadratic") {
  const ResampleTable table = InterpolationTable(Interpolation::cubic, 12, 4);
  for (int32_t k = 16; k < 32; ++k) {
    const double position = (k + 0.5) / 4 - 0.5;
    double sum = 0;
    for (int32_t j = 0; j < table.taps; ++j) {
      const double x = table.start[k] + j;
      sum += table.weights[static_cast<size_t>(k) * table.taps + j] * (0.3 * x * x - x + 2);
    }
    CHECK(sum == doctest::Approx(0.3 * position * position - position + 2).epsilon(1e-5));
  }
}

TEST_CASE("layouts that cannot hold an interpolation, and plans that contradict themselves, are refused") {
  CHECK(WhyNoInterpolation(PlanOf(48, 2, {}, 12), Interpolation::lanczos) == "");
  for (const NetPlan& plan :
       {PlanOf(24, 2, {}, 12), PlanOf(72, 4, {}, 12), PlanOf(48, 2, {3}, 12), PlanOf(48, 2, {}, 13)})
    CHECK(WhyNoInterpolation(plan, Interpolation::lanczos) != "");
  CHECK(WhyNoInterpolation(PlanOf(8, 2, {}, 12), Interpolation::cubic) != "");
  CHECK(WhyNoNet(PlanOf(48, 2, {64, 64}, 14)) == "");
  for (const NetPlan& plan :
       {PlanOf(50, 2, {}, 14), PlanOf(49, 2, {}, 14), PlanOf(48, 3, {}, 14), PlanOf(48, 2, {0}, 14),
        PlanOf(48, 2, {}, 18), PlanOf(48, 2, std::vector<int32_t>(16, 4), 14)})
    CHECK(WhyNoNet(plan) != "");
}

TEST_CASE("a widened network answers as before, and is only made of one whose layers fit") {
  const NetPlan narrow = PlanOf(24, 2, {5, 4}, kSlopedRampKind);
  NeuralNet net = RandomNet(narrow);
  net.layers[1].units[3].b = 0.25f;
  NetPlan plan = LayersOf(net, {8, 6});
  CHECK((plan.inputs == 24 && plan.factor == 2 && plan.kinds == narrow.kinds));
  CHECK(LayersOf(net, {}).hidden == narrow.hidden);
  REQUIRE(WhyNotWider(net, plan) == "");
  NeuralNet wide = Widened(net, plan);
  const matrix plane = test::RandomPlane(9, 7, 3);
  matrix before, after;
  NetEnlargeChannel(net, plane, before);
  NetEnlargeChannel(wide, plane, after);
  CHECK(std::equal(before.x, before.x + before.mn, after.x));
  CHECK(wide.layers[0].units[7].W.x[0] != 0);  // else it would never learn
  CHECK(WhyNotWider(net, LayersOf(net, {8, 3})) != "");
  CHECK(WhyNotWider(net, LayersOf(net, {8})) != "");
}

TEST_CASE("random weights depend on the seed alone, fill their range and keep the variance of ramps") {
  NetPlan plan = PlanOf(48, 2, {300, 200}, 14);
  const NeuralNet net = RandomNet(plan), again = RandomNet(plan);
  plan.seed = 2;
  const NeuralNet other = RandomNet(plan);
  double squares = 0, widest = 0;
  int64_t count = 0;
  for (size_t i = 0; i < 200; ++i) {
    const NetUnit& unit = net.layers[1].units[i];
    CHECK(std::memcmp(unit.W.x, again.layers[1].units[i].W.x, 300 * sizeof(float)) == 0);
    CHECK(unit.b == 0);
    for (int32_t k = 0; k < unit.Nin; ++k, ++count) {
      squares += unit.W.x[k] * unit.W.x[k];
      widest = std::max(widest, std::abs(double{unit.W.x[k]}));
    }
  }
  CHECK(net.layers[1].units[0].W.x[0] != other.layers[1].units[0].W.x[0]);
  CHECK(squares / static_cast<double>(count) == doctest::Approx(2.0 / 300).epsilon(0.02));
  CHECK(widest <= std::sqrt(6.0 / 300));
  CHECK(widest > 0.999 * std::sqrt(6.0 / 300));
}
