#include "linear/dmatrix.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <utility>

#include "platform/assert.h"
#include "platform/console.h"
#include "platform/memory.h"
#include "simd/columns/kernels.h"

namespace norv {
namespace {

// Who asks for memory, as the messages name it.
struct Asker {
  const char* elements;
  const char* others;
};

constexpr Asker kConstructor = {"matrix(int,int)", "matrix::dmatrix(int,int)"};
constexpr Asker kCopy = {"(dmatrix::dmatrix(dmatrix&))", "matrix::dmatrix(dmatrix&)"};
constexpr Asker kDim = {"matrix::dim", "matrix::dim"};

[[noreturn]] void PrintAndThrow(const char* text) {
  Say("%s", text);
  throw text;
}

[[noreturn]] void ThrowElementsMissing(double count, const Asker& asker) {
  static char buffer[160];
  std::snprintf(buffer, sizeof buffer,
                "Out of memory!\n\nFailed to allocate %.2f MB memory for dmatrix x member.\n\n%s", count * 8e-6,
                asker.elements);
  PrintAndThrow(buffer);
}

[[noreturn]] void ThrowMemberMissing(const char* member, const Asker& asker) {
  static char buffer[160];
  std::snprintf(buffer, sizeof buffer, "Failed memory allocation of dmatrix %s member.\n\n%s", member, asker.others);
  PrintAndThrow(buffer);
}

// Sizes and column pointers around elements that are there already (null: they are allocated).
void Allocate(dmatrix& a, int32_t rows, int32_t columns, const Asker& asker) {
  const int64_t count = int64_t{rows} * columns;
  const bool possible = rows >= 0 && columns >= 0 && count <= std::numeric_limits<int32_t>::max();
  if (possible && count == 0) return;
  if (possible && !a.x) a.x = static_cast<double*>(AllocateAligned(static_cast<size_t>(count) * sizeof(double)));
  if (!possible || !a.x) {
    a.freemem();
    ThrowElementsMissing(static_cast<double>(count), asker);
  }
  a.z = static_cast<double**>(std::malloc(static_cast<size_t>(columns) * sizeof(double*)));
  if (!a.z) {
    a.freemem();
    ThrowMemberMissing("z", asker);
  }
  a.m = rows;
  a.n = columns;
  a.mn = static_cast<int32_t>(count);
  for (int32_t j = 0; j < columns; ++j) a.z[j] = a.x + int64_t{rows} * j;
}

}  // namespace

dmatrix::dmatrix(int32_t rows, int32_t columns) { Allocate(*this, rows, columns, kConstructor); }

dmatrix::dmatrix(const dmatrix& other) {
  Allocate(*this, other.m, other.n, kCopy);
  std::copy_n(other.x, other.mn, x);
  if (!other.ip) return;
  ip = static_cast<int32_t*>(std::malloc((static_cast<size_t>(m) + 1) * sizeof(int32_t)));
  if (!ip) {
    freemem();
    ThrowMemberMissing("ip", kCopy);
  }
  std::copy_n(other.ip, m + 1, ip);
}

void dmatrix::swap(dmatrix& other) noexcept {
  std::swap(m, other.m);
  std::swap(n, other.n);
  std::swap(mn, other.mn);
  std::swap(ip, other.ip);
  std::swap(x, other.x);
  std::swap(z, other.z);
}

void dmatrix::dim(int32_t rows, int32_t columns) {
  if (rows == m && columns == n) return;
  if (int64_t{rows} * columns != mn) freemem();
  std::free(std::exchange(z, nullptr));
  std::free(std::exchange(ip, nullptr));
  Allocate(*this, rows, columns, kDim);
}

void dmatrix::freemem() {
  m = n = mn = 0;
  FreeAligned(std::exchange(x, nullptr));
  std::free(std::exchange(z, nullptr));
  std::free(std::exchange(ip, nullptr));
}

void dmatrix::copydata(const dmatrix& r) {
  NORV_ASSERT_TEXT(mn == r.mn, "mn==r.mn");
  std::copy_n(r.x, mn, x);
}

void dmatrix::fill(double value) { std::fill_n(x, mn, value); }

void dmatrix::mult(const dmatrix& a, const dmatrix& b) {
  NORV_ASSERT_TEXT(m == a.m && n == b.n && a.n == b.m, "m==a.m && n==b.n && a.n==b.m");
  ActiveColumnKernels().multiply(a.z, a.n, b.z, z, m, n);
}

void dmatrix::multTA(const dmatrix& a, const dmatrix& b) {
  NORV_ASSERT_TEXT(m == a.n && n == b.n && a.m == b.m, "m==a.n && n==b.n && a.m==b.m");
  for (int32_t j = 0; j < n; ++j) ActiveColumnKernels().dots(b.z[j], a.z, a.m, m, z[j]);
}

void dmatrix::multTB(const dmatrix& a, const dmatrix& b) {
  NORV_ASSERT_TEXT(m == a.m && n == b.m && a.n == b.n, "m==a.m && n==b.m && a.n==b.n");
  ActiveColumnKernels().multiplyTransposed(a.z, a.n, b.z, z, m, n);
}

}  // namespace norv
