// The single-precision matrix on which nearly everything works: images, samples, weights.
#pragma once

#include <cstdint>
#include <string>

#include "platform/folder.h"

namespace norv {

class dmatrix;

// m x n floats, column-major: element (i, j) is x[i + m*j] = z[j][i]. An image plane has m = width and n = height, so
// that z[r] is scanline r. x is aligned for the widest vectors. Empty: all sizes 0, all pointers null. Owns x, z and
// ip. Sizes that overflow 32 bits or that memory cannot hold throw the out-of-memory message (const char*), leaving it
// empty.
class matrix {
 public:
  int32_t m = 0;
  int32_t n = 0;
  int32_t mn = 0;
  int32_t* ip = nullptr;  // optional, m + 1 entries: carried by copies, filled by nobody here
  float* x = nullptr;
  float** z = nullptr;

  matrix() = default;
  // Contents undefined. Empty with m = n = 0 when either size is 0.
  matrix(int32_t rows, int32_t columns);
  matrix(const matrix& other);
  matrix(matrix&& other) noexcept;
  // Deep assignment of shape, elements and ip; copy() is the one that keeps an equally long shape.
  matrix& operator=(matrix other) noexcept;
  ~matrix();
  void swap(matrix& other) noexcept;

  // Re-dimensions. Equal sizes: nothing. Equal count: elements are kept and reinterpreted. Otherwise contents
  // undefined.
  void dim(int32_t rows, int32_t columns);
  void freemem();

  // Elements of a; when the counts are equal and the shapes differ, the own shape is kept on purpose.
  void copy(const matrix& a);
  // Asserts equal counts; copies ip too when it has as many entries.
  void copydata(const matrix& a);
  void ones();
  void fill(float value);
  void addscalar(float s);
  void sub(const matrix& a);
  // Becomes the a.n x 1 vector of row i of a.
  void getrow(const matrix& a, int32_t i);
  void setrow(int32_t i, const matrix& v);
  // A double vector into row i or column j, each element rounded to single precision.
  void setrowd(int32_t i, const dmatrix& v);
  void setcold(int32_t j, const dmatrix& v);
  // Products with double accumulation of single-precision products; the target has the right size already (asserted).
  void mult(const matrix& a, const matrix& b);
  void multTA(const matrix& a, const matrix& b);

  // .mat files: m, n, mn, then the elements. Throw "PROBLEM OPENING FILE!" when the file cannot be opened or written.
  void save(const std::string& name, Folder folder) const;
  // What a short file lacks reads as zeros, with a warning. remove deletes the file of that name in the executable's
  // directory afterwards, whatever folder says.
  void load(const std::string& name, bool remove, Folder folder);
  // base, then k in decimal, then ".mat", in the executable's directory.
  void savenumbered(const std::string& base, int32_t k) const;
};

// The out-of-memory message of so many elements.
[[noreturn]] void ThrowOutOfMemory(double elements);

// Whether rows x columns elements can be counted in 32 bits; negative sizes cannot.
bool IsCountable(int32_t rows, int32_t columns);

// rows x columns as a 32-bit count. Throws the out-of-memory message when a size is negative or the count overflows.
int32_t ElementCount(int32_t rows, int32_t columns);

}  // namespace norv
