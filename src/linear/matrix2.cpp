#include "linear/matrix2.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <utility>

#include "linear/dmatrix.h"
#include "platform/assert.h"
#include "platform/memory.h"

namespace norv {
namespace {

// The texts live in buffers of the process, so that what was thrown outlives every matrix.
[[noreturn]] void ThrowColumnsMissing() {
  static char buffer[] = "Failed memory allocation of matrix z member.  matrix::dim\n";
  throw static_cast<const char*>(buffer);
}

[[noreturn]] void ThrowIndicesMissing() {
  static char buffer[] = "Failed memory allocation of matrix ip member.\n";
  throw static_cast<const char*>(buffer);
}

// The m + 1 entries of a matrix with m rows, from one with sourceRows rows; entries that it lacks are 0.
int32_t* CopyIndices(const int32_t* source, int32_t sourceRows, int32_t m) {
  int32_t* copy = static_cast<int32_t*>(std::calloc(static_cast<size_t>(m) + 1, sizeof(int32_t)));
  if (copy) std::copy_n(source, std::min(sourceRows, m) + 1, copy);
  return copy;
}

}  // namespace

void ThrowOutOfMemory(double elements) {
  static char buffer[160];
  std::snprintf(buffer, sizeof buffer,
                "Out of memory!\n\nFailed to allocate %.2f MB memory for matrix x member.\n\nmatrix::dim",
                elements * 4e-6);
  throw static_cast<const char*>(buffer);
}

bool IsCountable(int32_t rows, int32_t columns) {
  return rows >= 0 && columns >= 0 && int64_t{rows} * columns <= std::numeric_limits<int32_t>::max();
}

int32_t ElementCount(int32_t rows, int32_t columns) {
  if (!IsCountable(rows, columns)) ThrowOutOfMemory(static_cast<double>(int64_t{rows} * columns));
  return rows * columns;
}

// ------------------------------------------------------------------------------------------- storage and copies

matrix::matrix(int32_t rows, int32_t columns) { dim(rows, columns); }

matrix::matrix(const matrix& other) {
  dim(other.m, other.n);
  std::copy_n(other.x, other.mn, x);
  if (!other.ip) return;
  ip = CopyIndices(other.ip, other.m, m);
  if (!ip) {
    freemem();
    ThrowIndicesMissing();
  }
}

matrix::matrix(matrix&& other) noexcept { swap(other); }

matrix& matrix::operator=(matrix other) noexcept {
  swap(other);
  return *this;
}

matrix::~matrix() { freemem(); }

void matrix::swap(matrix& other) noexcept {
  std::swap(m, other.m);
  std::swap(n, other.n);
  std::swap(mn, other.mn);
  std::swap(ip, other.ip);
  std::swap(x, other.x);
  std::swap(z, other.z);
}

void matrix::dim(int32_t rows, int32_t columns) {
  if (rows == m && columns == n) return;
  int32_t count = 0;
  try {
    count = ElementCount(rows, columns);
  } catch (const char*) {
    freemem();
    throw;
  }
  if (count != mn || count == 0) freemem();
  if (count == 0) return;
  FreeAligned(std::exchange(z, nullptr));
  std::free(std::exchange(ip, nullptr));
  if (!x) x = static_cast<float*>(AllocateAligned(static_cast<size_t>(count) * sizeof(float)));
  if (!x) {
    freemem();
    ThrowOutOfMemory(count);
  }
  m = rows;
  n = columns;
  mn = count;
  z = static_cast<float**>(AllocateAligned(static_cast<size_t>(n) * sizeof(float*)));
  if (!z) {
    freemem();
    ThrowColumnsMissing();
  }
  for (int32_t j = 0; j < n; ++j) z[j] = x + int64_t{m} * j;
}

void matrix::freemem() {
  m = n = mn = 0;
  FreeAligned(std::exchange(x, nullptr));
  FreeAligned(std::exchange(z, nullptr));
  std::free(std::exchange(ip, nullptr));
}

void matrix::copy(const matrix& a) {
  if (&a == this) return;
  if (mn != a.mn) dim(a.m, a.n);
  // Equal counts keep their own shape on purpose: callers fill vectors from blocks and blocks from vectors this way.
  std::copy_n(a.x, mn, x);
  if (!a.ip) return;
  std::free(std::exchange(ip, CopyIndices(a.ip, a.m, m)));
  if (!ip) ThrowIndicesMissing();
}

void matrix::copydata(const matrix& a) {
  NORV_ASSERT_TEXT(mn == a.mn, "mn==c.mn");
  if (&a == this) return;
  std::copy_n(a.x, mn, x);
  if (!a.ip || a.m != m) return;
  if (!ip) ip = CopyIndices(a.ip, a.m, m);
  if (!ip) {
    freemem();
    ThrowIndicesMissing();
  }
  std::copy_n(a.ip, m + 1, ip);
}

// ----------------------------------------------------------------------------------------------- element loops

void matrix::ones() { fill(1.0f); }

void matrix::fill(float value) { std::fill_n(x, mn, value); }

void matrix::addscalar(float s) {
  for (int32_t i = 0; i < mn; ++i) x[i] += s;
}

void matrix::sub(const matrix& a) {
  const float* other = a.x;
  for (int32_t i = 0; i < mn; ++i) x[i] -= other[i];
}

void matrix::getrow(const matrix& a, int32_t i) {
  dim(a.n, 1);
  for (int32_t j = 0; j < a.n; ++j) x[j] = a.z[j][i];
}

void matrix::setrow(int32_t i, const matrix& v) {
  NORV_ASSERT_TEXT(n == v.mn && i < m, "n==a.mn && i<m");
  for (int32_t j = 0; j < n; ++j) z[j][i] = v.x[j];
}

void matrix::setrowd(int32_t i, const dmatrix& v) {
  for (int32_t j = 0; j < v.mn; ++j) z[j][i] = static_cast<float>(v.x[j]);
}

void matrix::setcold(int32_t j, const dmatrix& v) {
  for (int32_t i = 0; i < m; ++i) z[j][i] = static_cast<float>(v.x[i]);
}

// ---------------------------------------------------------------------------------------------------- products

// Runs of rows side by side, so that the columns of a are read contiguously; each element is still summed over k in
// order.
void matrix::mult(const matrix& a, const matrix& b) {
  NORV_ASSERT_TEXT(m == a.m && n == b.n && a.n == b.m, "m==a.m && n==b.n && a.n==b.m");
  constexpr int32_t kRun = 256;
  double sums[kRun];
  for (int32_t j = 0; j < n; ++j)
    for (int32_t i0 = 0; i0 < m; i0 += kRun) {
      const int32_t run = std::min(kRun, m - i0);
      std::fill_n(sums, run, 0.0);
      for (int32_t k = 0; k < a.n; ++k) {
        const float* column = a.z[k] + i0;
        const float factor = b.z[j][k];
        for (int32_t i = 0; i < run; ++i) sums[i] += static_cast<double>(column[i] * factor);
      }
      for (int32_t i = 0; i < run; ++i) z[j][i0 + i] = static_cast<float>(sums[i]);
    }
}

// Four products at a time in four partial sums (two vectors of two doubles), then the tail in order.
void matrix::multTA(const matrix& a, const matrix& b) {
  NORV_ASSERT_TEXT(m == a.n && n == b.n && a.m == b.m, "m==a.n && n==b.n && a.m==b.m");
  const int32_t blocks = a.m / 4 * 4;
  for (int32_t j = 0; j < n; ++j)
    for (int32_t i = 0; i < m; ++i) {
      const float *left = a.z[i], *right = b.z[j];
      double sums[4] = {};
      for (int32_t k = 0; k < blocks; k += 4)
        for (int32_t lane = 0; lane < 4; ++lane) sums[lane] += static_cast<double>(left[k + lane] * right[k + lane]);
      double sum = (sums[0] + sums[2]) + (sums[1] + sums[3]);
      for (int32_t k = blocks; k < a.m; ++k) sum += static_cast<double>(left[k] * right[k]);
      z[j][i] = static_cast<float>(sum);
    }
}

}  // namespace norv
