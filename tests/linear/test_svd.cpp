// The double matrix and its singular value decomposition.
#include <algorithm>
#include <array>
#include <cmath>
#include <doctest/doctest.h>
#include <functional>
#include <limits>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "linear/dmatrix.h"
#include "linear/matrix2.h"
#include "linear/random.h"
#include "linear/symmetric.h"
#include "support/captured_output.h"
#include "support/levels.h"

using namespace norv;
using namespace norv::test;

namespace {

dmatrix Random(int32_t m, int32_t n, RandomGenerator& random) {
  dmatrix a(m, n);
  for (int32_t i = 0; i < a.mn; ++i) a.x[i] = (random.Next() - 5000) * 2e-4 + random.Next() * 1e-9;
  return a;
}

dmatrix Product(const dmatrix& a, const dmatrix& b) {
  dmatrix product(a.m, b.n);
  product.mult(a, b);
  return product;
}

double Largest(const dmatrix& a) {
  double largest = 0;
  for (int32_t i = 0; i < a.mn; ++i) largest = std::max(largest, std::abs(a.x[i]));
  return largest;
}

// How far the first `count` columns are from orthonormal.
double Skewness(const dmatrix& a, int32_t count) {
  double worst = 0;
  for (int32_t i = 0; i < count; ++i)
    for (int32_t j = 0; j < count; ++j)
      worst = std::max(worst, std::abs(std::inner_product(a.z[i], a.z[i] + a.m, a.z[j], 0.0) - (i == j)));
  return worst;
}

void CheckDecomposition(const dmatrix& a, const char* what) {
  CAPTURE(std::string(what));
  CAPTURE(a.m);
  CAPTURE(a.n);
  dmatrix U, W, V;
  a.svd(U, W, V);
  REQUIRE((U.m == a.m && U.n == a.n && W.m == a.n && W.n == 1 && V.m == a.n && V.n == a.n));
  double worst = 0;
  for (int32_t i = 0; i < a.m; ++i)
    for (int32_t j = 0; j < a.n; ++j) {
      double sum = 0;
      for (int32_t k = 0; k < a.n; ++k) sum += U.z[k][i] * W.x[k] * V.z[k][j];
      worst = std::max(worst, std::abs(sum - a.z[j][i]));
    }
  CHECK(worst <= 1e-12 * Largest(a));
  CHECK(Skewness(V, a.n) < 1e-12);
  CHECK(Skewness(U, std::min(a.m, a.n)) < 1e-12);
  CHECK(std::is_sorted(W.x, W.x + a.n, std::greater<>()));
  CHECK(W.x[a.n - 1] >= 0);
  for (int32_t k = a.m; k < a.n; ++k)
    CHECK((W.x[k] == 0 && std::all_of(U.z[k], U.z[k] + a.m, [](double v) { return v == 0; })));
}

}  // namespace

TEST_CASE("singular value decomposition of every shape and rank") {
  RandomGenerator random;
  for (int m : {1, 2, 3, 4, 7, 8, 9, 36, 70, 300})
    for (int n : {1, 2, 3, 5, 8, 17, 36}) CheckDecomposition(Random(m, n, random), "random");
  for (auto [m, n, rank] : {std::array{40, 30, 5}, {30, 40, 5}, {9, 9, 8}, {12, 4, 1}, {4, 12, 1}})
    CheckDecomposition(Product(Random(m, rank, random), Random(rank, n, random)), "rank deficient");
  for (auto [m, n] : {std::pair{5, 4}, {4, 6}, {1, 1}}) {
    dmatrix zero(m, n);
    zero.fill(0);
    CheckDecomposition(zero, "zero");
    zero.fill(-3);
    CheckDecomposition(zero, "constant");
  }
  dmatrix hilbert(12, 12), graded = Random(30, 20, random), huge = Random(8, 5, random), tiny = huge;
  for (int32_t i = 0; i < 12; ++i)
    for (int32_t j = 0; j < 12; ++j) hilbert.z[j][i] = 1.0 / (i + j + 1);
  for (int32_t i = 0; i < graded.mn; ++i) graded.x[i] *= std::pow(10.0, -(i / 30));
  for (int32_t i = 0; i < huge.mn; ++i) huge.x[i] *= 1e200;
  for (int32_t i = 0; i < tiny.mn; ++i) tiny.x[i] *= 1e-290;
  CheckDecomposition(hilbert, "Hilbert");
  CheckDecomposition(graded, "graded");
  CheckDecomposition(huge, "huge");
  CheckDecomposition(tiny, "tiny");
}

TEST_CASE("singular values come in descending order with their vectors") {
  dmatrix a(3, 3), U, W, V;
  a.fill(0);
  a.z[0][0] = 1;
  a.z[1][1] = -3;
  a.z[2][2] = 2;
  a.svd(U, W, V);
  const double values[] = {3, 2, 1};
  const int32_t rows[] = {1, 2, 0};
  for (int32_t k = 0; k < 3; ++k) {
    CHECK(W.x[k] == values[k]);
    CHECK(std::abs(U.z[k][rows[k]]) == 1);
    CHECK(U.z[k][rows[k]] * V.z[k][rows[k]] == (k == 0 ? -1 : 1));
  }
  // The results may take the place of the matrix.
  a.svd(a, W, V);
  CHECK(std::abs(a.z[0][1]) == 1);
  dmatrix none;
  none.svd(U, W, V);
  CHECK((U.mn == 0 && W.mn == 0 && V.mn == 0));
}

TEST_CASE("a decomposition that does not settle says so and ends") {
  RandomGenerator random;
  for (double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    dmatrix a = Random(6, 4, random), U, W, V;
    a.x[7] = bad;
    const std::string said = OutputOf([&] { a.svd(U, W, V); });
    CHECK(said == "No SVD convergence in 30 iterations.");
    CHECK((U.m == 6 && U.n == 4 && W.m == 4 && V.n == 4 && std::isnan(W.x[0])));
  }
  CHECK(OutputOf([&] { CheckDecomposition(Random(20, 20, random), "random"); }) == "");
}

TEST_CASE("eigenvectors of symmetric matrices with values of either sign, equal ones and none") {
  RandomGenerator random;
  for (auto [n, rank] : {std::pair{1, 1}, {2, 2}, {3, 3}, {8, 8}, {36, 36}, {65, 65}, {20, 3}, {7, 0}}) {
    CAPTURE(n);
    const dmatrix factor = Random(n, std::max(rank, 1), random);
    dmatrix a(n, n), values(n, 1);
    a.multTB(factor, factor);
    if (rank == 0) a.fill(0);
    for (int32_t i = 0; i < n; ++i) a.z[i][i] -= 0.25 * rank;
    dmatrix vectors = a;
    REQUIRE(DecomposeSymmetric(n, vectors.x, values.x));
    CHECK(Skewness(vectors, n) < 1e-13);
    const dmatrix turned = Product(a, vectors);
    double worst = 0;
    for (int32_t k = 0; k < n; ++k)
      for (int32_t i = 0; i < n; ++i) worst = std::max(worst, std::abs(turned.z[k][i] - values.x[k] * vectors.z[k][i]));
    CHECK(worst <= 1e-13 * n * Largest(a));
  }
  dmatrix bad = Random(5, 5, random), values(5, 1);
  bad.x[3] = std::numeric_limits<double>::quiet_NaN();
  CHECK(!DecomposeSymmetric(5, bad.x, values.x));
}

TEST_CASE("products of double matrices") {
  RandomGenerator random;
  for (auto [m, inner, n] : {std::array{5, 3, 7}, {1, 1, 1}, {8, 9, 4}, {19, 21, 10}}) {
    const dmatrix a = Random(m, inner, random), b = Random(inner, n, random);
    dmatrix at(inner, m), bt(n, inner), viaLeft(m, n), viaRight(m, n);
    for (int32_t k = 0; k < inner; ++k) {
      for (int32_t i = 0; i < m; ++i) at.z[i][k] = a.z[k][i];
      for (int32_t j = 0; j < n; ++j) bt.z[k][j] = b.z[j][k];
    }
    viaLeft.multTA(at, b);
    viaRight.multTB(a, bt);
    const dmatrix product = Product(a, b);
    double worst = 0;
    int different = 0;
    for (int32_t i = 0; i < m; ++i)
      for (int32_t j = 0; j < n; ++j) {
        double sum = 0;
        for (int32_t k = 0; k < inner; ++k) sum += b.z[j][k] * a.z[k][i];
        different += product.z[j][i] != sum || viaRight.z[j][i] != sum;
        worst = std::max(worst, std::abs(viaLeft.z[j][i] - sum));
      }
    CHECK(different == 0);
    CHECK(worst < 1e-14);
  }
}

TEST_CASE("decompositions and products have the same bits at every vector level") {
  RandomGenerator random;
  for (auto [m, n] : {std::pair{3, 3}, {7, 5}, {21, 36}, {45, 40}}) {
    const dmatrix a = Random(m, n, random);
    std::vector<dmatrix> first;
    for (const VectorLevel level : AvailableLevels()) {
      const ForcedLevel forced(level);
      std::vector<dmatrix> made(5, dmatrix(n, n));
      a.svd(made[0], made[1], made[2]);
      made[3].multTA(a, a);
      made[4].multTB(made[2], made[3]);
      if (first.empty()) first = made;
      for (size_t k = 0; k < made.size(); ++k) CHECK(std::equal(made[k].x, made[k].x + made[k].mn, first[k].x));
    }
  }
}

TEST_CASE("double matrices change shape, are copied and round into single rows and columns") {
  RandomGenerator random;
  dmatrix a = Random(2, 6, random);
  const dmatrix copy = a;
  CHECK(copy.x != a.x);
  a.dim(3, 4);
  CHECK((a.m == 3 && a.z[3] == a.x + 9));
  CHECK(std::equal(a.x, a.x + 12, copy.x));
  a.dim(0, 4);
  CHECK((a.m == 0 && a.n == 0 && !a.x && !a.z));

  matrix single(2, 6);
  dmatrix row(6, 1), column(2, 1);
  for (int32_t j = 0; j < 6; ++j) row.x[j] = 1.0 / (j + 3);
  column.fill(0.1);
  single.ones();
  single.setrowd(1, row);
  single.setcold(4, column);
  CHECK(single.z[3][1] == static_cast<float>(1.0 / 6));
  CHECK(single.z[3][0] == 1.0f);
  CHECK((single.z[4][0] == 0.1f && single.z[4][1] == 0.1f));
}

TEST_CASE("what a double matrix prints and throws") {
  const auto check = [](const std::string& tail, auto action) {
    std::string thrown;
    const std::string said = OutputOf([&] {
      try {
        action();
      } catch (const char* text) {
        thrown = text;
      }
    });
    CHECK(said == thrown);
    CHECK(thrown == "Out of memory!\n\nFailed to allocate 20000.00 MB memory for dmatrix x member.\n\n" + tail);
  };
  dmatrix a(3, 3);
  check("matrix(int,int)", [] { dmatrix(50000, 50000); });
  check("matrix::dim", [&] { a.dim(50000, 50000); });
  CHECK((a.mn == 0 && !a.x));
}
