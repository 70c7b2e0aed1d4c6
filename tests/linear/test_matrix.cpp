// The float matrix: shapes, copies, products and .mat files.
#include <array>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <doctest/doctest.h>
#include <filesystem>
#include <numeric>
#include <string>
#include <utility>
#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>
#endif

#include "linear/matrix2.h"
#include "linear/random.h"
#include "platform/memory.h"
#include "platform/paths.h"
#include "support/captured_output.h"
#include "support/scratch.h"

using namespace norv;
using namespace norv::test;

namespace {

matrix Counting(int32_t m, int32_t n) {
  matrix a(m, n);
  std::iota(a.x, a.x + a.mn, 1.0f);
  return a;
}

matrix Random(int32_t m, int32_t n, RandomGenerator& random) {
  matrix a(m, n);
  for (int32_t i = 0; i < a.mn; ++i) a.x[i] = static_cast<float>(random.Next() - 5000) * 0.0137f;
  return a;
}

void GiveIndices(matrix& a) {
  a.ip = static_cast<int32_t*>(std::malloc(sizeof(int32_t) * (a.m + 1)));
  std::iota(a.ip, a.ip + a.m + 1, 70);
}

bool IsEmpty(const matrix& a) { return a.m == 0 && a.n == 0 && a.mn == 0 && !a.x && !a.z && !a.ip; }

bool HasShape(const matrix& a, int32_t m, int32_t n) {
  bool good = a.m == m && a.n == n && a.mn == m * n && reinterpret_cast<uintptr_t>(a.x) % kAlignment == 0;
  for (int32_t j = 0; j < n; ++j) good = good && a.z[j] == a.x + m * j;
  return good;
}

bool Counts(const matrix& a) {
  for (int32_t i = 0; i < a.mn; ++i)
    if (a.x[i] != static_cast<float>(i + 1)) return false;
  return true;
}

template <typename Action>
std::string Thrown(const Action& action) {
  try {
    action();
  } catch (const char* text) {
    return text;
  }
  return "";
}

std::string Header(int32_t m, int32_t n, int32_t mn) {
  const int32_t fields[] = {m, n, mn};
  return {reinterpret_cast<const char*>(fields), sizeof fields};
}

#ifndef _WIN32
// Standard error of a child that runs the action and is expected to abort.
template <typename Action>
std::string LastWords(const Action& action) {
  return ErrorsOf([&] {
    const pid_t child = fork();
    if (child == 0) {
      std::signal(SIGABRT, SIG_DFL);
      action();
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    CHECK(WIFSIGNALED(status));
  });
}
#endif

}  // namespace

TEST_CASE("a matrix keeps, reinterprets or gives up its elements as its shape changes") {
  CHECK(IsEmpty(matrix(0, 5)));
  CHECK(IsEmpty(matrix(5, 0)));
  matrix a = Counting(2, 6);
  GiveIndices(a);
  const float* store = a.x;
  a.dim(2, 6);
  CHECK(a.ip != nullptr);
  a.dim(3, 4);
  CHECK(HasShape(a, 3, 4));
  CHECK(a.x == store);
  CHECK(a.ip == nullptr);
  CHECK(Counts(a));
  CHECK(a.z[1][0] == 4.0f);
  a.dim(5, 7);
  CHECK(HasShape(a, 5, 7));
  a.dim(0, 7);
  CHECK(IsEmpty(a));
}

TEST_CASE("copies of a matrix are deep and carry the indices") {
  matrix a = Counting(2, 3);
  GiveIndices(a);
  matrix b = a;
  a.x[0] = -1.0f;
  CHECK(HasShape(b, 2, 3));
  CHECK(Counts(b));
  CHECK((b.ip != a.ip && b.ip[0] == 70 && b.ip[2] == 72));

  // An equally long target keeps its own shape on purpose.
  matrix c(3, 2);
  c.copy(b);
  CHECK(HasShape(c, 3, 2));
  CHECK(Counts(c));
  CHECK(c.ip != nullptr);
  matrix d(4, 4);
  d.copy(b);
  CHECK(HasShape(d, 2, 3));
  CHECK(d.ip[2] == 72);
  matrix e(2, 3);
  e.copydata(b);
  CHECK(Counts(e));
  CHECK(e.ip[1] == 71);
  b.ip[1] = 5;
  e.copydata(b);
  CHECK(e.ip[1] == 5);
  matrix f(6, 1);
  f.copydata(b);
  CHECK(Counts(f));
  CHECK(f.ip == nullptr);

  const float* store = b.x;
  const matrix moved = std::move(b);
  CHECK(moved.x == store);
  CHECK(IsEmpty(b));
}

TEST_CASE("rows and element loops") {
  matrix a = Counting(3, 5), row, twos(3, 5);
  row.getrow(a, 1);
  CHECK(HasShape(row, 5, 1));
  for (int32_t j = 0; j < 5; ++j) CHECK(row.x[j] == a.z[j][1]);
  a.setrow(2, row);
  for (int32_t j = 0; j < 5; ++j) CHECK(a.z[j][2] == a.z[j][1]);
  twos.ones();
  twos.addscalar(1.0f);
  a.sub(twos);
  CHECK(a.x[0] == -1.0f);
  CHECK(a.z[4][2] == 12.0f);
}

TEST_CASE("products round single products and add them in double precision") {
  RandomGenerator random;
  for (auto [m, k, n] : {std::array{1, 1, 1}, {2, 3, 4}, {7, 5, 3}, {300, 9, 2}, {1, 64, 1}}) {
    const matrix a = Random(m, k, random), b = Random(k, n, random);
    matrix transposed(k, m), plain(m, n), viaTranspose(m, n);
    for (int32_t i = 0; i < a.m; ++i)
      for (int32_t j = 0; j < a.n; ++j) transposed.z[i][j] = a.z[j][i];
    plain.mult(a, b);
    viaTranspose.multTA(transposed, b);
    int wrong = 0;
    for (int32_t i = 0; i < plain.m; ++i)
      for (int32_t j = 0; j < plain.n; ++j) {
        double sum = 0;
        for (int32_t l = 0; l < k; ++l) sum += static_cast<double>(a.z[l][i] * b.z[j][l]);
        wrong += plain.z[j][i] != static_cast<float>(sum);
        wrong += std::abs(viaTranspose.z[j][i] - sum) > 6e-8 * std::abs(sum) + 1e-12;
      }
    CHECK(wrong == 0);
  }
}

TEST_CASE(".mat files byte for byte") {
  const ScratchFolder folder;
  const matrix a = Counting(2, 3);
  a.save(folder / "a.mat", Folder::asGiven);
  CHECK(ReadBytes(folder / "a.mat") == Header(2, 3, 6) + std::string(reinterpret_cast<const char*>(a.x), 24));
  matrix().save(folder / "finish.mat", Folder::asGiven);
  CHECK(ReadBytes(folder / "finish.mat") == std::string(12, '\0'));

  matrix b(9, 9);
  b.load(folder / "a.mat", false, Folder::asGiven);
  CHECK(HasShape(b, 2, 3));
  CHECK(Counts(b));
  b.load(folder / "finish.mat", false, Folder::asGiven);
  CHECK(IsEmpty(b));

  // The third field is never believed; what a short file lacks is zeros.
  WriteBytes(folder / "b.mat", Header(3, 2, 1000000) + std::string(reinterpret_cast<const char*>(a.x), 21));
  b.load(folder / "b.mat", false, Folder::asGiven);
  CHECK(HasShape(b, 3, 2));
  CHECK(b.x[4] == 5.0f);
  CHECK(b.x[5] == 0.0f);
}

TEST_CASE("numbered matrices and removal stay in the executable's directory") {
  const ScratchFolder folder;
  const std::string name = "norv-test-matrix-", path = ExecutableDirectory() + name + "12.mat";
  Counting(2, 3).savenumbered(name, 12);
  CHECK(std::filesystem::file_size(path) == 12 + 24);
  matrix a;
  a.load(name + "12.mat", true, Folder::executable);
  CHECK(Counts(a));
  CHECK(!std::filesystem::exists(path));
  // A full path is read; a file of that name beside the executable would go, the one that was read stays.
  a.save(folder / "a.mat", Folder::asGiven);
  a.load(folder / "a.mat", true, Folder::asGiven);
  CHECK(std::filesystem::exists(folder / "a.mat"));
}

TEST_CASE("what a matrix throws") {
  const ScratchFolder folder;
  const auto outOfMemory = [](const char* megabytes) {
    return std::string("Out of memory!\n\nFailed to allocate ") + megabytes +
           " MB memory for matrix x member.\n\nmatrix::dim";
  };
  matrix a = Counting(2, 3);
  CHECK(Thrown([&] { a.dim(50000, 50000); }) == outOfMemory("10000.00"));
  CHECK(IsEmpty(a));
  CHECK(Thrown([] { matrix(-3, -1); }) == outOfMemory("0.00"));
  CHECK(Thrown([] { matrix(-1000000, 1); }) == outOfMemory("-4.00"));
  if (AvailableMemory() < size_t{8} << 30) CHECK(Thrown([] { matrix(2000000000, 1); }) == outOfMemory("8000.00"));
  WriteBytes(folder / "bad.mat", Header(70000, 70000, 4));
  a = Counting(2, 3);
  CHECK(Thrown([&] { a.load(folder / "bad.mat", false, Folder::asGiven); }) == outOfMemory("19600.00"));
  CHECK(IsEmpty(a));
  CHECK(Thrown([&] { a.load(folder / "none.mat", false, Folder::asGiven); }) == "PROBLEM OPENING FILE!");
  CHECK(Thrown([&] { a.save(folder / "none/a.mat", Folder::asGiven); }) == "PROBLEM OPENING FILE!");
}

#ifndef _WIN32
TEST_CASE("size mismatches name the condition, the file and the line") {
  const auto check = [](const std::string& words, const std::string& condition) {
    CAPTURE(words);
    CHECK(words.find(": " + condition + ", file matrix2.cpp, line ") != std::string::npos);
  };
  matrix a(2, 3), b(4, 4);
  check(LastWords([&] { a.mult(a, b); }), "m==a.m && n==b.n && a.n==b.m");
  check(LastWords([&] { a.multTA(a, b); }), "m==a.n && n==b.n && a.m==b.m");
  check(LastWords([&] { a.copydata(b); }), "mn==c.mn");
  check(LastWords([&] { a.setrow(2, matrix(3, 1)); }), "n==a.mn && i<m");
}
#endif
