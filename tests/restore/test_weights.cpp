// Weights, directions and edge masks against their definitions.
#include <cmath>
#include <doctest/doctest.h>
#include <limits>

#include "restore/edge_mask.h"
#include "restore/terms/reference_plane.h"
#include "restore/terms/weights.h"
#include "support/plain_restore.h"
#include "support/random_plane.h"
#include "support/restoration.h"

using namespace norv;
using namespace norv::test;

namespace {

float Weight(float g, const Weighting& weighting, bool squared = false) {
  ApplyRule(&g, 1, weighting, squared);
  return g;
}

}  // namespace

TEST_CASE("rules: flat places, the join at delta, and the squared penalty that each weight stands for") {
  const Weighting huber{Rule::huber, 0.5f, 3}, lorentzian{Rule::lorentzian, 0.5f, 3};
  const double sigma = 3 * std::sqrt(2.0);
  CHECK(Weight(0, huber) == 0.5f);
  CHECK(Weight(3, huber) == 0.5f);
  CHECK(Weight(-2, huber) == 0.5f);
  CHECK(Weight(0, lorentzian) == doctest::Approx(0.5 / sigma));
  for (const float g : {3.5f, -10.0f, 255.0f}) {
    const double size = std::abs(static_cast<double>(g));
    CHECK(Weight(g, huber) == doctest::Approx(0.5 * std::sqrt((2 * size - 3) * 3) / size));
    CHECK(Weight(g * g, huber, true) == doctest::Approx(Weight(g, huber)));
    CHECK(Weight(g, lorentzian) == doctest::Approx(0.5 * std::sqrt(std::log1p(size * size / (sigma * sigma))) / size));
    CHECK(Weight(g * g, lorentzian, true) == doctest::Approx(Weight(g, lorentzian)));
    CHECK(Weight(g, {Rule::shaped, 0.5f, 3, 1}) == doctest::Approx(Weight(g, huber)));
  }
}

TEST_CASE("shaped weights: powers from the logarithmic limit to steep ones, thresholds down to none") {
  for (const float shape : {-2.0f, 0.0f, 1e-4f, 0.5f, 0.8f, 2.0f, 5.0f})
    for (const float delta : {1e-3f, 0.7f, 3.0f, 1e6f})
      for (float g = 1e-4f; g < 300; g *= 1.07f) {
        const double p = static_cast<double>(shape), t = static_cast<double>(g) / static_cast<double>(delta);
        const double penalty = p > 0 ? 1 + 2 / p * std::expm1(p * std::log(t)) : 1 + 2 * std::log(t);
        CAPTURE(shape);
        CAPTURE(delta);
        CAPTURE(g);
        CHECK(Weight(-g, {Rule::shaped, 0.5f, delta, shape}) ==
              doctest::Approx(t <= 1 ? 0.5 : 0.5 * std::sqrt(penalty) / t).epsilon(3e-6));
      }
  CHECK(Weight(0, {Rule::shaped, 0.5f, 0, 0.8f}) == 0.5f);
  CHECK(Weight(1, {Rule::shaped, 0.5f, 0, 0.8f}) == 0);
  // Powers beyond e^87 count as that.
  CHECK(Weight(255, {Rule::shaped, 0.5f, 1e-3f, 100}) ==
        doctest::Approx(0.5 * std::sqrt(0.02 * std::exp(87)) / 255e3).epsilon(1e-4));
  CHECK(std::isnan(Weight(std::nanf(""), {Rule::shaped, 0.5f, 3, 0.8f})));
  CHECK(std::isnan(Weight(1, {Rule::shaped, 0.5f, -3, 0.8f})));
}

TEST_CASE("the orientation field, unsmoothed, smoothed, and with scales beyond the plane") {
  for (const auto& [w, size] : {std::pair{1, 255.f}, {2, 255.f}, {9, 255.f}, {21, 255.f}, {9, 1e18f}, {9, 1e-2f}})
    for (const double scale : {0.0, 0.4, 1.4, 9.0}) {
      const matrix x = RandomPlane(w, 6, 11, 0, size);
      OrientationField field;
      FindOrientation(field, x, scale);
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
  FindOrientation(field, flat, 1);
  for (int32_t i = 0; i < 81; ++i) CHECK((field.u1.x[i] == 0 && field.u2.x[i] == 0));
  const matrix x = RandomPlane(9, 9, 12);
  FindOrientation(field, x, std::numeric_limits<double>::quiet_NaN());
  FindOrientation(other, x, 0);
  CHECK(SameBits(field.u1, other.u1));
  FindOrientation(field, x, std::numeric_limits<double>::infinity());
  FindOrientation(other, x, 900);
  CHECK(SameBits(field.u1, other.u1));
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

TEST_CASE("the reference plane is the negated enlargement") {
  for (const int32_t f : {1, 2, 3}) {
    const matrix y = RandomPlane(7, 5, 13);
    matrix reference = ReferencePlane(y, f);
    for (int32_t i = 0; i < reference.mn; ++i) reference.x[i] *= -1;
    CHECK(Apart(reference, Enlarged(y, f)) < 1e-3);
  }
}
