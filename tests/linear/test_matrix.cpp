// The matrices of floats and of doubles: shapes, copies, products, what they throw, and .mat files.
#include <cstdlib>
#include <sys/wait.h>

#include "linear/dmatrix.h"
#include "linear/matrix_file.h"
#include "platform/memory.h"
#include "platform/paths.h"
#include "support/random_plane.h"
#include "support/test.h"

namespace {

// Elements 1, 2, ..., indices 70, 71, ...
template <typename Matrix>
Matrix Counting(int32_t m, int32_t n) {
  Matrix a(m, n);
  std::iota(a.x, a.x + a.mn, 1);
  a.ip = static_cast<int32_t*>(std::malloc(sizeof(int32_t) * (m + 1)));
  std::iota(a.ip, a.ip + m + 1, 70);
  return a;
}

template <typename Matrix>
bool IsEmpty(const Matrix& a) {
  return a.m == 0 && a.n == 0 && a.mn == 0 && !a.x && !a.z && !a.ip;
}

// Of this shape, and still with the elements 1, 2, ...
template <typename Matrix>
bool Counts(const Matrix& a, int32_t m, int32_t n) {
  bool good = a.m == m && a.n == n && a.mn == m * n && reinterpret_cast<uintptr_t>(a.x) % kAlignment == 0;
  for (int32_t j = 0; j < n; ++j)
    for (int32_t i = 0; i < m; ++i)
      good = good && &a.z[j][i] == a.x + m * j + i && static_cast<int32_t>(a.z[j][i]) == m * j + i + 1;
  return good;
}

}  // namespace

TEST_CASE_TEMPLATE("a matrix keeps, reinterprets or gives up its elements; copies are deep", Matrix, matrix, dmatrix) {
  CHECK((IsEmpty(Matrix(0, 5)) && IsEmpty(Matrix(5, 0))));
  Matrix a = Counting<Matrix>(2, 6), copy = a;
  const auto* store = a.x;
  CHECK((Counts(copy, 2, 6) && copy.ip != a.ip && copy.ip[0] == 70 && copy.ip[2] == 72));
  copy.x[0] = -1;
  a.dim(2, 6);
  CHECK((Counts(a, 2, 6) && a.ip != nullptr));
  a.dim(3, 4);
  CHECK((Counts(a, 3, 4) && a.x == store && a.ip == nullptr));
  const Matrix moved = std::move(a);
  CHECK((moved.x == store && IsEmpty(a)));
  a.dim(5, 7);
  std::iota(a.x, a.x + a.mn, 1);
  CHECK(Counts(a, 5, 7));
  a.dim(0, 7);
  CHECK(IsEmpty(a));
}

TEST_CASE("copies into a matrix that is there") {
  matrix a = Counting<matrix>(2, 3), b(3, 2), c(4, 4), d(2, 3), e(6, 1);
  // An equally long target keeps its own shape on purpose.
  b.copy(a);
  CHECK((Counts(b, 3, 2) && b.ip != nullptr));
  c.copy(a);
  CHECK((Counts(c, 2, 3) && c.ip[2] == 72));
  d.copydata(a);
  a.ip[1] = 5;
  d.copydata(a);
  CHECK((Counts(d, 2, 3) && d.ip[1] == 5));
  e.copydata(a);
  CHECK((Counts(e, 6, 1) && e.ip == nullptr));
}

TEST_CASE("rows, columns and element loops") {
  matrix a = Counting<matrix>(3, 5), row, twos(3, 5);
  row.getrow(a, 1);
  REQUIRE((row.m == 5 && row.n == 1));
  a.setrow(2, row);
  for (int32_t j = 0; j < 5; ++j) CHECK((row.x[j] == a.z[j][1] && a.z[j][2] == a.z[j][1]));
  twos.ones();
  twos.addscalar(1.0f);
  a.sub(twos);
  CHECK((a.x[0] == -1.0f && a.z[4][2] == 12.0f));
  dmatrix wide(5, 1), high(3, 1);
  for (int32_t j = 0; j < 5; ++j) wide.x[j] = 1.0 / (j + 3);
  high.fill(0.1);
  a.setrowd(1, wide);
  a.setcold(4, high);
  CHECK((a.z[3][1] == static_cast<float>(1.0 / 6) && a.z[3][0] == 8.0f));
  CHECK((a.z[4][0] == 0.1f && a.z[4][1] == 0.1f && a.z[4][2] == 0.1f));
}

TEST_CASE_TEMPLATE("products round single products and add them in double precision", Matrix, matrix, dmatrix) {
  RandomGenerator random;
  for (auto [m, k, n] : {std::array{1, 1, 1}, {2, 3, 4}, {7, 5, 3}, {300, 9, 2}, {1, 64, 1}, {19, 21, 10}}) {
    const Matrix a = RandomMatrix<Matrix>(m, k, random), b = RandomMatrix<Matrix>(k, n, random);
    Matrix at(k, m), bt(n, k), plain(m, n), viaLeft(m, n), viaRight(m, n);
    for (int32_t l = 0; l < k; ++l) {
      for (int32_t i = 0; i < m; ++i) at.z[i][l] = a.z[l][i];
      for (int32_t j = 0; j < n; ++j) bt.z[l][j] = b.z[j][l];
    }
    plain.mult(a, b);
    viaLeft.multTA(at, b);
    if constexpr (std::is_same_v<Matrix, dmatrix>)
      viaRight.multTB(a, bt);
    else
      viaRight = plain;
    int wrong = 0;
    for (int32_t i = 0; i < m; ++i)
      for (int32_t j = 0; j < n; ++j) {
        double sum = 0;
        for (int32_t l = 0; l < k; ++l) sum += static_cast<double>(a.z[l][i] * b.z[j][l]);
        const auto rounded = static_cast<std::remove_pointer_t<decltype(a.x)>>(sum);
        wrong += plain.z[j][i] != rounded || viaRight.z[j][i] != rounded;
        const double tolerance = sizeof rounded == 8 ? 1e-14 : 6e-8 * std::abs(sum) + 1e-12;
        wrong += std::abs(static_cast<double>(viaLeft.z[j][i]) - sum) > tolerance;
      }
    CHECK(wrong == 0);
  }
}

TEST_CASE(".mat files byte for byte") {
  const ScratchFolder folder;
  const std::string path = folder / "a.mat";
  const matrix a = Counting<matrix>(2, 3);
  matrix b(9, 9);
  a.save(path, Folder::asGiven);
  CHECK(ReadBytes(path) == Int32Bytes({2, 3, 6}) + BytesOf(a.x, 6));
  b.load(path, false, Folder::asGiven);
  CHECK(Counts(b, 2, 3));
  matrix().save(path, Folder::asGiven);
  CHECK(ReadBytes(path) == std::string(12, '\0'));
  b.load(path, false, Folder::asGiven);
  CHECK(IsEmpty(b));
  // The third field is never believed; what a short file lacks is zeros.
  WriteBytes(path, Int32Bytes({3, 2, 1000000}) + BytesOf(a.x, 6).substr(0, 21));
  b.load(path, false, Folder::asGiven);
  CHECK((b.m == 3 && b.n == 2 && b.x[4] == 5.0f && b.x[5] == 0.0f));

  CHECK(MatrixHeader{2, 3, 1000000}.FileBytes() == 12 + 24);
  CHECK(MatrixHeader{46340, 46340, 0}.Possible());
  CHECK_FALSE(MatrixHeader{46341, 46341, 0}.Possible());
  CHECK_FALSE(MatrixHeader{-1, -1, 1}.Possible());
}

TEST_CASE("numbered matrices and removal stay in the executable's directory") {
  const ScratchFolder folder;
  const std::string name = "norv-test-matrix-", path = ExecutableDirectory() + name + "12.mat";
  Counting<matrix>(2, 3).savenumbered(name, 12);
  CHECK(fs::file_size(path) == 12 + 24);
  matrix a;
  a.load(name + "12.mat", true, Folder::executable);
  CHECK(Counts(a, 2, 3));
  CHECK(!fs::exists(path));
  // A full path is read; a file of that name beside the executable would go, the one that was read stays.
  a.save(folder / "a.mat", Folder::asGiven);
  a.load(folder / "a.mat", true, Folder::asGiven);
  CHECK(fs::exists(folder / "a.mat"));
}

TEST_CASE("what matrices throw, and print where they are of doubles") {
  const ScratchFolder folder;
  const std::string single = "matrix x member.\n\nmatrix::dim";
  const auto check = [](const std::string& megabytes, const std::string& end, const auto& action) {
    const std::string text = "Out of memory!\n\nFailed to allocate " + megabytes + " MB memory for " + end;
    const std::string said = OutputOf([&] { CHECK_THROWS_WITH(action(), text.c_str()); });
    CHECK(said == (end[0] == 'd' ? text : ""));
  };
  matrix a(2, 3), b(2, 3);
  dmatrix c(3, 3);
  check("10000.00", single, [&] { a.dim(50000, 50000); });
  check("20000.00", "d" + single, [&] { c.dim(50000, 50000); });
  check("20000.00", "dmatrix x member.\n\nmatrix(int,int)", [] { dmatrix(50000, 50000); });
  check("0.00", single, [] { matrix(-3, -1); });
  check("-4.00", single, [] { matrix(-1000000, 1); });
  if (AvailableMemory() < size_t{8} << 30) check("8000.00", single, [] { matrix(2000000000, 1); });
  WriteBytes(folder / "bad.mat", Int32Bytes({70000, 70000, 4}));
  check("19600.00", single, [&] { b.load(folder / "bad.mat", false, Folder::asGiven); });
  CHECK((IsEmpty(a) && IsEmpty(b) && IsEmpty(c)));
  CHECK_THROWS_WITH(a.load(folder / "none.mat", false, Folder::asGiven), "PROBLEM OPENING FILE!");
  CHECK_THROWS_WITH(a.save(folder / "none/a.mat", Folder::asGiven), "PROBLEM OPENING FILE!");
}

TEST_CASE("size mismatches name the condition, the file and the line") {
  matrix a(2, 3), b(4, 4);
  const auto check = [](const std::string& condition, const auto& action) {
    const std::string words = ErrorsOf([&] {
      if (fork() == 0) {
        std::signal(SIGABRT, SIG_DFL);
        action();
        _exit(0);
      }
      int status = 0;
      wait(&status);
      CHECK(WIFSIGNALED(status));
    });
    CHECK(Contains(words, ": " + condition + ", file matrix2.cpp, line "));
  };
  check("m==a.m && n==b.n && a.n==b.m", [&] { a.mult(a, b); });
  check("m==a.n && n==b.n && a.m==b.m", [&] { a.multTA(a, b); });
  check("mn==c.mn", [&] { a.copydata(b); });
  check("n==a.mn && i<m", [&] { a.setrow(2, matrix(3, 1)); });
}
