// Rows of a plane as an operator reads them, wherever each lies in memory.
#pragma once

#include <cstdint>
#include <vector>

#include "linear/matrix2.h"
#include "platform/memory.h"
#include "platform/team.h"

namespace norv {

class PlaneRows {
 public:
  PlaneRows(const matrix& plane) : PlaneRows(plane.z, 0, plane.m, plane.n) {}
  // rows: pointers to the plane's rows `first`, first + 1, ...; width x height: of the plane
  PlaneRows(const float* const* rows, int64_t first, int32_t width, int32_t height)
      : m(width), n(height), rows_(rows), first_(first) {}

  const float* operator[](int64_t r) const { return rows_[r - first_]; }

  int32_t m, n;

 private:
  const float* const* rows_;
  int64_t first_;
};

// The rows of a plane that one run of blocks looks at: its own ones, which lie in the plane, and copies of those of its
// neighbours around them (its halo). The run keeps the copies up to date by taking its neighbours' steps with them, so
// that within a sweep nobody reads what another one writes.
class RowsWithHalo {
 public:
  // own lies within window; the plane outlives this. Copies are undefined at first.
  RowsWithHalo(matrix& plane, Range own, Range window);

  Range Window() const { return window_; }
  float* operator[](int64_t r) { return rows_[static_cast<size_t>(r - window_.begin)]; }
  PlaneRows Rows() const { return {rows_.data(), window_.begin, width_, height_}; }

 private:
  Range window_;
  int32_t width_, height_;
  AlignedArray<float> copies_;
  std::vector<float*> rows_;
};

}  // namespace norv
