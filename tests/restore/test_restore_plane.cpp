// One plane: every regulariser type against the definitions in dense doubles, and the same bits at every vector level.
#include "restore/blocks/row_runs.h"
#include "restore/edge_mask.h"
#include "restore/restore_plane.h"
#include "simd/levels.h"
#include "support/levels.h"
#include "support/plain_restore.h"
#include "support/restoration.h"
#include "support/test.h"

namespace {

struct Case {
  matrix observed, working;
  BitMask mask;
  RestoreParameters parameters;

  Case(int32_t w, int32_t h, const RestoreParameters& p)
      : observed(RandomPlane(w, h, 7)), working(Enlarged(observed, p.factor)), parameters(p) {
    if (p.type == 3) MarkEdges(mask, working, p.edgeThreshold, StandingTeam::Alone());
  }

  matrix Fast(StandingTeam& team = StandingTeam::Alone()) const {
    matrix x = working;
    restore(x, mask, observed, parameters, nullptr, team);
    return x;
  }
  // The plain way, from a start that is off by `error` grey levels in a chequered pattern.
  PlainPlane Plain(double error = 0) const {
    matrix taps;
    BuildTaps(taps, parameters.factor, UpdateFilter(parameters));
    std::vector<bool> set;
    const BitMask dilated = DilateMask(mask, StandingTeam::Alone());
    for (int32_t i = 0; i < dilated.width * dilated.height; ++i)
      set.push_back(dilated.Get(i / dilated.width, i % dilated.width));
    PlainPlane start(working);
    for (size_t i = 0; i < start.v.size(); ++i) start.v[i] += i % 2 ? error : -error;
    return PlainRestore(start, PlainPlane(observed), Vector(taps.x, taps.x + taps.mn), parameters, set,
                        PlainPlane(working));
  }
};

// Off by no more than rounding: what a rounding error at the start makes of itself, with a margin.
void CheckExact(const Case& one) {
  const PlainPlane plain = one.Plain(), disturbed = one.Plain(255 * 6e-8);
  const matrix fast = one.Fast();
  double rounding = 0, largest = 0, apart = 0;
  for (size_t i = 0; i < plain.v.size(); ++i) {
    rounding = std::max(rounding, std::abs(plain.v[i] - disturbed.v[i]));
    largest = std::max(largest, std::abs(plain.v[i]));
    apart = std::max(apart, std::abs(static_cast<double>(fast.x[i]) - plain.v[i]));
  }
  // Results of very wide filters ring far beyond the display range, and round accordingly.
  CHECK(apart < std::max({0.005, 1e-4 * (largest - 255), 50 * rounding}));
}

}  // namespace

TEST_CASE("every regulariser type does what its definition says, on planes of any shape, factors and filters") {
  const auto check = [](int32_t w, int32_t h, int32_t factor, int32_t code, float emphasis, float lambdaCross) {
    for (int32_t type = -1; type <= 7; ++type) {
      RestoreParameters p = TestParameters(type, factor);
      p.kernelCode = code, p.emphasis = emphasis, p.lambdaCross = lambdaCross;
      if (w != 5 || h != 4) p.iterations = 1;
      INFO("type ", type, " of ", w, " x ", h, " factor ", factor, " filter ", code);
      CheckExact(Case(w, h, p));
    }
  };
  check(5, 4, 2, -1, 0, 0.3f);
  check(2, 50, 2, -1, 0, 0.3f);  // several blocks
  check(6, 5, 2, -1, 0.4f, 0);   // types 1 and 5 without the cross weights
  const int32_t shapes[][4] = {{5, 4, 2, -1}, {1, 1, 1, -1},  {1, 1, 2, -1},  {1, 4, 2, 3}, {5, 1, 3, -1}, {2, 2, 4, 5},
                               {3, 5, 3, 1},  {4, 3, 2, -35}, {3, 3, 5, -20}, {3, 4, 4, 0}, {9, 2, 1, -1}};
  for (const auto& [w, h, factor, code] : shapes) check(w, h, factor, code, 0.4f, 0.3f);
  CHECK(SameBits(Case(5, 4, TestParameters(8)).Fast(), Case(5, 4, TestParameters(0)).Fast()));
}

TEST_CASE("without iterations or steps nothing is done; an empty plane begins as zeros; no mask is a mask of nothing") {
  for (int32_t type = -1; type <= 7; ++type) {
    Case one(6, 5, TestParameters(type)), zeros = one, empty = one;
    zeros.working.fill(0);
    empty.working.freemem();
    CHECK(SameBits(empty.Fast(), type == 0 ? matrix() : zeros.Fast()));
    one.parameters.iterations = 0;
    CHECK(SameBits(one.Fast(), one.working));
    one.parameters.iterations = -2;  // emphasis alone
    CHECK(SameBits(one.Fast(), one.working) == (type == -1 || type == 7));
    one.parameters.iterations = 2, one.parameters.steps = -3, one.parameters.emphasis = 0;
    CHECK(SameBits(one.Fast(), one.working));
  }
  Case masked(6, 5, TestParameters(3)), plain(6, 5, TestParameters(-1));
  masked.mask = BitMask();
  masked.parameters.emphasis = 0;
  CHECK(SameBits(masked.Fast(), plain.Fast()));
}

TEST_CASE("a restoration gives the same bits on every number of threads") {
  // Shorter than a block, one row, blocks of odd heights, filters that reach over several blocks, a last block longer
  // than the others, more threads than rows; and wide enough for the other loops to be shared out.
  const int32_t shapes[][4] = {{9, 5, 2, -1}, {9, 1, 1, -1},  {6, 70, 3, -1},  {5, 150, 1, -35},
                               {4, 23, 7, 5}, {3, 9, 64, -1}, {300, 97, 2, 1}, {5, 40, 5, -11}};
  StandingTeam two(2), three(3), sixteen(16);
  for (int32_t type = -1; type <= 7; ++type)
    for (const int32_t* shape : shapes) {
      RestoreParameters p = TestParameters(type, shape[2]);
      p.kernelCode = shape[3];
      if (shape[0] > 9) p.iterations = 1;
      INFO("type ", type, " of ", shape[0], " x ", shape[1], " factor ", shape[2]);
      const Case one(shape[0], shape[1], p);
      const matrix alone = one.Fast();
      for (StandingTeam* team : {&two, &three, &sixteen}) CHECK(SameBits(one.Fast(*team), alone));
    }
}

TEST_CASE("sums are formed by blocks that do not depend on the team, the last one the longest") {
  for (const int32_t factor : {1, 3, 33})
    for (const int32_t rows : {1, 31, 64, 95, 500}) {
      const RowRuns alone(rows, factor), shared(rows, factor, 16);
      CHECK(alone.Runs() == 1);
      CHECK(shared.Runs() >= std::min(16, shared.Blocks()));
      REQUIRE(shared.Blocks() == alone.Blocks());
      int64_t next = 0;
      for (int32_t run = 0; run < shared.Runs(); ++run) {
        const Range mine = shared.Rows(shared.BlocksOf(run));
        CHECK(mine.begin == next);
        for (int64_t r = mine.begin; r < mine.end; ++r) CHECK(shared.BlockOf(r) == alone.BlockOf(r));
        next = mine.end;
      }
      CHECK(next == factor * rows);
      const auto length = [&](int64_t b) { return alone.Rows({b, b + 1}).end - alone.Rows({b, b + 1}).begin; };
      CHECK(length(alone.Blocks() - 1) >= length(0));
    }
}

TEST_CASE("a restoration gives the same bits at every vector level") {
  for (int32_t type = -1; type <= 7; ++type)
    for (const int32_t width : {7, 23, 50}) {
      const Case one(width, 11, TestParameters(type, type % 2 ? 2 : 3));
      const matrix usual = one.Fast();
      for (const VectorLevel level : AvailableLevels()) {
        const ForcedLevel forced(level);
        CHECK(SameBits(one.Fast(), usual));
      }
    }
}

TEST_CASE("a result that has become NaN ends an absurd number of iterations") {
  alarm(60);  // the test itself, where it does not
  for (const int32_t type : {1, 2, 5, 6, 7}) {
    RestoreParameters p = TestParameters(type);
    p.iterations = p.steps = std::numeric_limits<int32_t>::max() / 2;
    Case one(4, 4, p);
    one.working.x[5] = std::numeric_limits<float>::quiet_NaN();
    CHECK(std::isnan(one.Fast().x[0]));
  }
  alarm(0);
}
