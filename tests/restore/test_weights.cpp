// Weights, directions and edge masks against their definitions.
#include "restore/edge_mask.h"
#include "restore/terms/weights.h"
#include "support/plain_restore.h"
#include "support/test.h"

namespace {

float Weight(float g, const Weighting& weighting, bool squared = false) {
  ApplyRule(&g, 1, weighting, squared);
  return g;
}

}  // namespace

TEST_CASE("every rule: flat places, the join at delta, powers down to the logarithmic limit, any threshold") {
  for (const auto& [rule, plain] : {std::pair<Rule, PlainRule>{Rule::huber, PlainHuber},
                                    {Rule::lorentzian, PlainLorentzian},
                                    {Rule::shaped, PlainShaped}})
    for (const float shape : {-2.0f, 0.0f, 1e-4f, 0.5f, 0.8f, 2.0f, 5.0f})
      for (const float delta : {1e-3f, 0.7f, 3.0f, 1e6f}) {
        if (rule == Rule::lorentzian && delta > 3) continue;  // whose logarithm near 1 is rounded away
        std::vector<float> differences{0, delta};
        for (float g = 1e-4f; g < 300; g *= 1.07f) differences.push_back(g);
        for (const float g : differences) {
          INFO("shape ", shape, " delta ", delta, " g ", g);
          const Weighting weighting{rule, 0.5f, delta, shape};
          const double expected = plain(g, 0.5, delta, shape);
          CHECK(Weight(-g, weighting) == doctest::Approx(expected).epsilon(3e-6));
          if (rule != Rule::shaped) CHECK(Weight(g * g, weighting, true) == doctest::Approx(expected).epsilon(3e-6));
        }
      }
  CHECK(Weight(0, {Rule::shaped, 0.5f, 0, 0.8f}) == 0.5f);
  CHECK(Weight(1, {Rule::shaped, 0.5f, 0, 0.8f}) == 0);
  // Powers beyond e^87 count as that.
  CHECK(Weight(255, {Rule::shaped, 0.5f, 1e-3f, 100}) ==
        doctest::Approx(0.5 * std::sqrt(0.02 * std::exp(87)) / 255e3).epsilon(1e-4));
  CHECK(std::isnan(Weight(std::nanf(""), {Rule::shaped, 0.5f, 3, 0.8f})));
  CHECK(std::isnan(Weight(10, {Rule::shaped, 0.5f, -3, 0.8f})));
}

TEST_CASE("the orientation field, unsmoothed, smoothed, and with scales beyond the plane") {
  for (const auto& [w, size] : {std::pair{1, 255.f}, {2, 255.f}, {9, 255.f}, {21, 255.f}, {9, 1e18f}, {9, 1e-2f}})
    for (const double scale : {0.0, 0.4, 1.4, 9.0}) {
      const matrix x = RandomPlane(w, 6, 11, 0, size);
      OrientationField field;
      FindOrientation(field, x, scale, StandingTeam::Alone());
      const PlainField plain = PlainOrientation(PlainPlane(x), scale);
      for (int32_t i = 0; i < x.mn; ++i) {
        CAPTURE(w);
        CAPTURE(scale);
        // The direction counts, not its sense.
        const double u1 = static_cast<double>(field.u1.x[i]), u2 = static_cast<double>(field.u2.x[i]);
        const double v1 = plain.u1.v[static_cast<size_t>(i)], v2 = plain.u2.v[static_cast<size_t>(i)];
        CHECK(u1 * u1 + u2 * u2 == doctest::Approx(v1 * v1 + v2 * v2));
        CHECK(std::abs(u1 * v2 - u2 * v1) < 1e-3);
      }
    }
}

TEST_CASE("no direction on a flat plane; NaN means no smoothing; infinite scales count as a bounded one") {
  matrix flat(9, 9);
  flat.fill(3);
  OrientationField field, other;
  FindOrientation(field, flat, 1, StandingTeam::Alone());
  for (int32_t i = 0; i < 81; ++i) CHECK((field.u1.x[i] == 0 && field.u2.x[i] == 0));
  const matrix x = RandomPlane(9, 9, 12);
  for (const auto& [scale, same] : {std::pair{std::nan(""), 0.0}, {HUGE_VAL, 900.0}}) {
    FindOrientation(field, x, scale, StandingTeam::Alone());
    FindOrientation(other, x, same, StandingTeam::Alone());
    CHECK(SameBits(field.u1, other.u1));
  }
}

TEST_CASE("edges: a step is marked on both sides, masks unite, growth stops at the border, dilation looks ahead") {
  matrix step(8, 6);
  for (int32_t i = 0; i < 48; ++i) step.x[i] = i % 8 < 4 ? 0 : 100;
  BitMask mask;
  MarkEdges(mask, step, 100);
  for (int32_t r = 0; r < 6; ++r)
    for (int32_t c = 0; c < 8; ++c) CHECK(mask.Get(r, c) == (r >= 1 && r <= 4 && (c == 3 || c == 4)));
  BitMask grown = mask;
  MarkEdges(grown, step, 101);  // marks none, and clears none
  CHECK(grown.words == mask.words);
  GrowMask(grown, 2);
  CHECK((grown.Get(0, 1) && !grown.Get(2, 0)));
  const BitMask dilated = DilateMask(mask);
  CHECK((dilated.Get(0, 2) && !dilated.Get(1, 5) && !dilated.Get(5, 4)));
  BitMask border;
  border.Resize(4, 4);
  border.Set(0, 1);
  GrowMask(border, 5);
  CHECK(border.words[0] == 2u);
  // A corner's diagonal gradients, 90 and 0, beat those along the axes, 60 and 60: squared 8100 against 7200, over 9.
  matrix corner(3, 3);
  corner.fill(0);
  corner.z[0][1] = corner.z[0][2] = corner.z[1][2] = 30;
  for (const float threshold : {29.9f, 30.1f}) {
    BitMask found;
    MarkEdges(found, corner, threshold);
    CHECK(found.Get(1, 1) == (threshold < 30));
  }
}
