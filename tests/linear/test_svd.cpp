// The singular value decomposition and what it is made of.
#include "linear/dmatrix.h"
#include "linear/symmetric.h"
#include "support/levels.h"
#include "support/random_plane.h"
#include "support/test.h"

namespace {

dmatrix Random(int32_t m, int32_t n, RandomGenerator& random) { return RandomMatrix<dmatrix>(m, n, random); }

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

// How far a times the right vectors is from the values times the left ones.
double Residue(const dmatrix& a, const dmatrix& left, const dmatrix& values, const dmatrix& right) {
  dmatrix difference = Product(a, right);
  for (int32_t k = 0; k < right.n; ++k)
    for (int32_t i = 0; i < a.m; ++i) difference.z[k][i] -= values.x[k] * left.z[k][i];
  return Largest(difference);
}

void CheckDecomposition(const dmatrix& a) {
  INFO(a.m, " ", a.n);
  dmatrix U = a, W, V;
  U.svd(U, W, V);  // the results may take the place of the matrix
  REQUIRE((U.m == a.m && U.n == a.n && W.m == a.n && W.n == 1 && V.m == a.n && V.n == a.n));
  CHECK(Residue(a, U, W, V) <= 1e-12 * Largest(a));
  CHECK((Skewness(V, a.n) < 1e-12 && Skewness(U, std::min(a.m, a.n)) < 1e-12));
  CHECK((std::is_sorted(W.x, W.x + a.n, std::greater<>()) && W.x[a.n - 1] >= 0));
  for (int32_t k = a.m; k < a.n; ++k)
    CHECK((W.x[k] == 0 && std::all_of(U.z[k], U.z[k] + a.m, [](double v) { return v == 0; })));
}

}  // namespace

TEST_CASE("singular value decomposition of every shape and rank") {
  RandomGenerator random;
  for (int m : {1, 2, 3, 4, 7, 8, 9, 36, 70, 300})
    for (int n : {1, 2, 3, 5, 8, 17, 36}) CheckDecomposition(Random(m, n, random));
  for (auto [m, n, rank] : {std::array{40, 30, 5}, {30, 40, 5}, {9, 9, 8}, {12, 4, 1}, {4, 12, 1}})
    CheckDecomposition(Product(Random(m, rank, random), Random(rank, n, random)));
  for (auto [m, n] : {std::pair{5, 4}, {4, 6}, {1, 1}}) {
    dmatrix zero(m, n);
    zero.fill(0);
    CheckDecomposition(zero);
    zero.fill(-3);
    CheckDecomposition(zero);
  }
  dmatrix hilbert(12, 12), graded = Random(30, 20, random), huge = Random(8, 5, random), tiny = huge;
  for (int32_t i = 0; i < 12; ++i)
    for (int32_t j = 0; j < 12; ++j) hilbert.z[j][i] = 1.0 / (i + j + 1);
  for (int32_t i = 0; i < graded.mn; ++i) graded.x[i] *= std::pow(10.0, -(i / 30));
  for (int32_t i = 0; i < huge.mn; ++i) huge.x[i] *= 1e200;
  for (int32_t i = 0; i < tiny.mn; ++i) tiny.x[i] *= 1e-290;
  for (const dmatrix& a : {hilbert, graded, huge, tiny}) CheckDecomposition(a);
  dmatrix none, U(2, 2), W(2, 2), V(2, 2);
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
  CHECK(OutputOf([&] { CheckDecomposition(Random(20, 20, random)); }) == "");
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
    CHECK(Residue(a, vectors, values, vectors) <= 1e-13 * n * Largest(a));
  }
  dmatrix bad = Random(5, 5, random), values(5, 1);
  bad.x[3] = std::numeric_limits<double>::quiet_NaN();
  CHECK(!DecomposeSymmetric(5, bad.x, values.x));
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
