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
constexpr Size kSizes[] = {{1, 1}, {2, 1}, {1, 2}, {2, 2}, {3, 2}, {5, 7}, {8, 3}, {9, 16}, {33, 5}, {1, 9}, {17, 1}};

// g = D' D p, row by row as the solver does it.
matrix Normal(DifferenceTerm& term, const matrix& p) {
  matrix g(p.m, p.n);
  g.fill(0);
  term.Clear();
  for (int32_t r = 0; r < p.n; ++r) {
    term.Step(p, r, -1);
    if (r > 0) term.AddAdjoint(g.z[r - 1], r - 1);
  }
  term.AddAdjoint(g.z[p.n - 1], p.n - 1);
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
    const matrix x = RandomPlane(size.w, size.h, 1), p = RandomPlane(size.w, size.h, 2, -1, 1);
    const matrix q = RandomPlane(size.w, size.h, 3, -1, 1);
    OrientationField field, scaled;
    FindOrientation(field, x, 0.8);
    FindOrientation(scaled, x, 0.8);
    BitMask mask;
    MarkEdges(mask, x, 90);
    const PixelList pixels(DilateMask(mask), size.h);
    const auto check = [&](DifferenceTerm&& term, bool everywhere = true) {
      INFO(typeid(term).name(), " of ", size.w, " x ", size.h);
      term.Weigh(x);
      const matrix normal = Normal(term, p);
      const double scale = 1e-5 * size.w * size.h;
      CHECK(Product(p, normal) == doctest::Approx(Energy(term, p)).epsilon(1e-5).scale(scale));
      CHECK(std::abs(Product(q, normal) - Product(Normal(term, q), p)) < scale);
      if (everywhere && size.w > 1 && size.h > 1) CHECK(Energy(term, p) > 0);
    };
    check(IsotropicTerm(size.w, size.h, kWeighting));
    check(ReferenceTerm(q, kWeighting));
    check(CrossTerm(size.w, size.h, kWeighting, field));
    check(ScaledCrossTerm(size.w, size.h, kWeighting, scaled));
    check(DirectionalTerm(size.w, size.h, kWeighting, kWeighting, field));
    check(MaskedTerm(size.w, size.h, kWeighting, field, pixels), false);
    check(AxisTerm(size.w, size.h, kWeighting));
  }
}

TEST_CASE("the filter pair: the plain reduction, and <R x, y> = <x, R' y>, for every code") {
  for (const int32_t code : {0, 1, 2, 3, 4, 5, 15, -1, -2, -3, -4, -5, -11, -13, -20, -21, -22, -31, -35})
    for (const int32_t f : {1, 2, 3, 4, 7})
      for (const Size size : kSizes) {
        INFO("code ", code, " factor ", f, " of ", size.w, " x ", size.h);
        const FilterChoice filter = *FilterOfKernelCode(code);
        FilterPair pair(filter, f, size.w, size.h);
        const matrix x = RandomPlane(f * size.w, f * size.h, 4, -1, 1), y = RandomPlane(size.w, size.h, 5, -1, 1);
        matrix reduced(size.w, size.h), plain(size.w, size.h), adjoint(x.m, x.n), taps;
        for (int32_t i = 0; i < size.h; ++i) {
          // Whatever stands behind LastSource does not count.
          matrix part = x;
          for (int32_t r = pair.LastSource(i) + 1; r < x.n; ++r) std::fill_n(part.z[r], x.m, 1e6f);
          pair.ReduceRow(part, i, reduced.z[i]);
        }
        for (int32_t r = 0; r < x.n; ++r) pair.AdjointRow(y, r, adjoint.z[r]);
        BuildTaps(taps, f, filter);
        ShrinkMatrix(plain, x, taps);
        REQUIRE(Apart(plain, reduced) < 1e-5);
        REQUIRE(std::abs(Product(reduced, y) - Product(x, adjoint)) < 1e-5 * std::sqrt(x.mn + 1.0));
      }
}
