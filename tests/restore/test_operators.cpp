// The linear operators of the restoration: adjoints, and the reduction against the plain one.
#include <typeinfo>

#include "raster/separable.h"
#include "restore/edge_mask.h"
#include "restore/filter_pair.h"
#include "restore/terms/differences.h"
#include "support/random_plane.h"
#include "support/test.h"

namespace {

struct Size {
  int32_t w, h;
};
constexpr Size kSizes[] = {{1, 1}, {2, 1},  {1, 2},  {2, 2}, {3, 2},  {5, 7},
                           {8, 3}, {9, 16}, {33, 5}, {1, 9}, {17, 1}, {7, 75}};

// g = D' D p, row by row and run by run as the solver does it.
matrix Normal(DifferenceTerm& term, const matrix& p, const RowRuns& cut) {
  matrix g(p.m, p.n);
  g.fill(0);
  for (int32_t run = 0; run < cut.Runs(); ++run) {
    const Range rows = cut.Rows(cut.BlocksOf(run));
    const int32_t begin = static_cast<int32_t>(rows.begin), end = static_cast<int32_t>(rows.end);
    term.Clear(run);
    for (int32_t r = std::max(begin - 1, 0); r < end; ++r) {
      term.Step(p, r, -1, run);
      if (r > begin) term.AddAdjoint(g.z[r - 1], r - 1, run);
    }
    term.AddAdjoint(g.z[end - 1], end - 1, run);
  }
  return g;
}

double Energy(const DifferenceTerm& term, const matrix& p) {
  double sums[8] = {};
  for (int32_t r = 0; r < p.n; ++r) term.AddSquares(sums, p, r);
  double total = 0;
  for (const double sum : sums) total += sum;
  return total;
}

constexpr Weighting kWeighting{Rule::huber, 0.7f, 20};

}  // namespace

TEST_CASE("every difference operator's adjoint: <D p, D p> = <p, D' D p>, and D' D is symmetric") {
  for (const Size size : kSizes) {
    StandingTeam team(3);
    const matrix x = RandomPlane(size.w, size.h, 1), p = RandomPlane(size.w, size.h, 2, -1, 1);
    const matrix q = RandomPlane(size.w, size.h, 3, -1, 1);
    const RowRuns cut(size.h, 1, team.Threads());
    REQUIRE(cut.Runs() == (size.h < 2 * kBlockRows ? 1 : 2));
    OrientationField field, scaled;
    FindOrientation(field, x, 0.8, team);
    FindOrientation(scaled, x, 0.8, team);
    BitMask mask;
    MarkEdges(mask, x, 90, team);
    const PixelList pixels(DilateMask(mask, team), size.h, team);
    const auto check = [&](DifferenceTerm&& term, bool everywhere = true) {
      INFO(typeid(term).name(), " of ", size.w, " x ", size.h);
      term.Weigh(x, team);
      const matrix normal = Normal(term, p, cut);
      const double scale = 1e-5 * size.w * size.h;
      CHECK(Product(p, normal) == doctest::Approx(Energy(term, p)).epsilon(1e-5).scale(scale));
      CHECK(std::abs(Product(q, normal) - Product(Normal(term, q, cut), p)) < scale);
      if (everywhere && size.w > 1 && size.h > 1) CHECK(Energy(term, p) > 0);
    };
    check(IsotropicTerm(size.w, cut, kWeighting));
    check(ReferenceTerm(q, cut, kWeighting, team));
    check(CrossTerm(size.w, cut, kWeighting, field));
    check(ScaledCrossTerm(size.w, cut, kWeighting, scaled));
    check(DirectionalTerm(size.w, cut, kWeighting, kWeighting, field));
    check(MaskedTerm(size.w, cut, kWeighting, field, pixels), false);
    check(AxisTerm(size.w, cut, kWeighting));
  }
}

TEST_CASE("the filter pair: the plain reduction, and <R x, y> = <x, R' y>, for every code") {
  for (const int32_t code : {0, 1, 2, 3, 4, 5, 15, -1, -2, -3, -4, -5, -11, -13, -20, -21, -22, -31, -35})
    for (const int32_t f : {1, 2, 3, 4, 7})
      for (const Size size : kSizes) {
        INFO("code ", code, " factor ", f, " of ", size.w, " x ", size.h);
        const FilterChoice filter = *FilterOfKernelCode(code);
        const FilterPair pair(filter, f, size.w, size.h);
        FilterLines lines(pair);
        const matrix x = RandomPlane(f * size.w, f * size.h, 4, -1, 1), y = RandomPlane(size.w, size.h, 5, -1, 1);
        matrix reduced(size.w, size.h), plain(size.w, size.h), adjoint(x.m, x.n), taps;
        for (int32_t i = 0; i < size.h; ++i) {
          // Whatever stands behind LastSource does not count.
          matrix part = x;
          for (int32_t r = pair.LastSource(i) + 1; r < x.n; ++r) std::fill_n(part.z[r], x.m, 1e6f);
          pair.ReduceRow(part, i, reduced.z[i], lines);
        }
        lines.Begin(0);
        for (int32_t r = 0; r < x.n; ++r) pair.AdjointRow(y, r, adjoint.z[r], lines);
        BuildTaps(taps, f, filter);
        ShrinkMatrix(plain, x, taps);
        REQUIRE(Apart(plain, reduced) < 1e-5);
        REQUIRE(std::abs(Product(reduced, y) - Product(x, adjoint)) < 1e-5 * std::sqrt(x.mn + 1.0));
      }
}
