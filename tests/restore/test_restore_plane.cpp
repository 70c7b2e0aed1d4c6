// One plane: every regulariser type against the definitions in dense doubles, and the same bits at every vector level.
#include <cmath>
#include <cstring>
#include <doctest/doctest.h>
#include <limits>

#include "raster/separable.h"
#include "restore/edge_mask.h"
#include "restore/restore_plane.h"
#include "simd/levels.h"
#include "support/plain_restore.h"
#include "support/random_plane.h"

using namespace norv;
using namespace norv::test;

namespace {

RestoreParameters Parameters(int32_t type, int32_t factor = 2) {
  RestoreParameters p{};
  p.factor = factor;
  p.kernelCode = -1;
  p.lambdaCross = 0.3f;
  p.lambda = 0.2f;
  p.deltaCross = 4;
  p.delta = 6;
  p.shapeCross = 0.8f;
  p.shapeDot = 0.6f;
  p.steps = 4;
  p.iterations = 2;
  p.orientationScale = 0.7f;
  p.emphasis = 0.4f;
  p.type = type;
  return p;
}

matrix Enlarged(const matrix& small, int32_t f) {
  matrix large;
  ResampleSeparable(small, large, EnlargementTable(small.m, f), EnlargementTable(small.n, f));
  return large;
}

struct Case {
  matrix observed, working;
  BitMask mask;
  RestoreParameters parameters;

  Case(int32_t w, int32_t h, const RestoreParameters& p)
      : observed(RandomPlane(w, h, 7)), working(Enlarged(observed, p.factor)), parameters(p) {
    if (p.type == 3) MarkEdges(mask, working, 60);
  }
  FilterChoice Filter() const { return *FilterOfKernelCode(parameters.kernelCode); }

  matrix Fast() const {
    matrix x = working;
    restore(x, mask, observed, parameters, nullptr);
    return x;
  }
  // The plain way, from a start that is off by `error` grey levels in a chequered pattern.
  PlainPlane Plain(double error = 0) const {
    matrix taps;
    BuildTaps(taps, parameters.factor, Filter());
    std::vector<bool> set;
    const BitMask dilated = DilateMask(mask);
    for (int32_t i = 0; i < dilated.width * dilated.height; ++i)
      set.push_back(dilated.Get(i / dilated.width, i % dilated.width));
    PlainPlane start(working);
    for (size_t i = 0; i < start.v.size(); ++i) start.v[i] += i % 2 ? error : -error;
    return PlainRestore(start, PlainPlane(observed), Vector(taps.x, taps.x + taps.mn), parameters, set,
                        PlainPlane(working));
  }
};

double LargestDifference(const matrix& a, const PlainPlane& b) {
  double largest = 0;
  for (int32_t i = 0; i < a.mn; ++i)
    largest = std::max(largest, std::abs(static_cast<double>(a.x[i]) - b.v[static_cast<size_t>(i)]));
  return largest;
}

// Off by no more than rounding: what a rounding error at the start makes of itself, with a margin.
bool IsExact(const Case& one) {
  const PlainPlane plain = one.Plain(), disturbed = one.Plain(255 * 6e-8);
  double rounding = 0;
  for (size_t i = 0; i < plain.v.size(); ++i) rounding = std::max(rounding, std::abs(plain.v[i] - disturbed.v[i]));
  double largest = 0;
  for (const double v : plain.v) largest = std::max(largest, std::abs(v));
  // Results of very wide kernels ring far beyond the display range, and round accordingly.
  const double bound = std::max({0.005, 1e-4 * (largest - 255), 50 * rounding});
  const double apart = LargestDifference(one.Fast(), plain);
  INFO("apart by " << apart << ", allowed " << bound);
  CHECK(apart < bound);
  return apart < bound;
}

bool SameBits(const matrix& a, const matrix& b) {
  return a.m == b.m && a.n == b.n && std::memcmp(a.x, b.x, sizeof(float) * static_cast<size_t>(a.mn)) == 0;
}

}  // namespace

TEST_CASE("every regulariser type does what its definition says, both passes and the tails") {
  for (int32_t type = -1; type <= 8; ++type)
    for (const float emphasis : {0.0f, 0.4f}) {
      RestoreParameters p = Parameters(type);
      p.emphasis = emphasis;
      const Case restored(5, 4, p);
      CAPTURE(type);
      CAPTURE(emphasis);
      RestoreParameters known = p;
      known.type = type == 8 ? 0 : type;
      Case plain(5, 4, known);
      CHECK(LargestDifference(restored.Fast(), plain.Plain()) < 0.005);
    }
}

TEST_CASE("planes of any shape, factors and kernels") {
  struct Shape {
    int32_t w, h, factor, kernel;
  };
  for (const Shape s : {Shape{1, 1, 1, -1},
                        {1, 1, 2, -1},
                        {1, 4, 2, 3},
                        {5, 1, 3, -1},
                        {2, 2, 4, 5},
                        {3, 5, 3, 1},
                        {4, 3, 2, -35},
                        {3, 3, 5, -20},
                        {3, 4, 4, 0},
                        {9, 2, 1, -1}})
    for (const int32_t type : {1, 2, 3, 5, 7}) {
      RestoreParameters p = Parameters(type, s.factor);
      p.kernelCode = s.kernel;
      p.iterations = 1;
      const Case one(s.w, s.h, p);
      CAPTURE(type);
      CAPTURE(s.w);
      CAPTURE(s.h);
      CAPTURE(s.factor);
      CAPTURE(s.kernel);
      CHECK(IsExact(one));
    }
}

TEST_CASE("types 1 and 5 go without the cross weights when their strength is not positive") {
  for (const int32_t type : {1, 5}) {
    RestoreParameters p = Parameters(type);
    p.lambdaCross = 0;
    const Case one(6, 5, p);
    CHECK(IsExact(one));
  }
}

TEST_CASE("nothing is done without iterations or steps, and only emphasis for negative iterations") {
  for (int32_t type = -1; type <= 7; ++type) {
    RestoreParameters p = Parameters(type);
    p.iterations = 0;
    CHECK(SameBits(Case(6, 5, p).Fast(), Case(6, 5, p).working));
    p.iterations = 2;
    p.steps = -3;
    p.emphasis = 0;
    CHECK(SameBits(Case(6, 5, p).Fast(), Case(6, 5, p).working));
    p.iterations = -2;
    p.emphasis = 0.5f;
    const bool emphasised = type != -1 && type != 7;
    CHECK(SameBits(Case(6, 5, p).Fast(), Case(6, 5, p).working) != emphasised);
  }
}

TEST_CASE("an empty working plane is cleared by the first update step, and left alone without any") {
  for (int32_t type = -1; type <= 7; ++type) {
    Case zeros(6, 5, Parameters(type)), empty = zeros;
    zeros.working.fill(0);
    empty.working.freemem();
    if (type == 0)
      CHECK(empty.Fast().mn == 0);
    else
      CHECK(SameBits(empty.Fast(), zeros.Fast()));
  }
}

TEST_CASE("the masked type without any mask is the plain one") {
  Case masked(6, 5, Parameters(3)), plain(6, 5, Parameters(4));
  masked.mask = BitMask();
  masked.parameters.emphasis = 0;
  plain.parameters.type = -1;
  CHECK(SameBits(masked.Fast(), plain.Fast()));
}

TEST_CASE("the same bits at every vector level") {
  for (int32_t type = -1; type <= 7; ++type)
    for (const int32_t width : {7, 23, 50}) {
      const Case one(width, 11, Parameters(type, type % 2 ? 2 : 3));
      ForceLevel(VectorLevel::avx);
      const matrix narrow = one.Fast();
      for (const VectorLevel level : {VectorLevel::avx2, VectorLevel::avx512}) {
        ForceLevel(level);
        CHECK(SameBits(one.Fast(), narrow));
      }
    }
  ForceLevel(MachineLevel());
  CHECK(ChooseLevelFromEnvironment().empty());
}

TEST_CASE("a result that has become NaN ends an absurd number of iterations") {
  for (const int32_t type : {1, 2, 5, 6, 7}) {
    RestoreParameters p = Parameters(type);
    p.iterations = p.steps = std::numeric_limits<int32_t>::max() / 2;
    Case one(4, 4, p);
    one.working.x[5] = std::numeric_limits<float>::quiet_NaN();
    CHECK(std::isnan(one.Fast().x[0]));
  }
}
