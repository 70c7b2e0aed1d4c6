// The patches of a plane that look most like a given one.
#pragma once

#include <cstdint>
#include <vector>

#include "denoise/patch_plane.h"

namespace norv {

struct SearchWindow {
  int32_t radius;  // rows and columns to each side of the given patch
  int32_t step;    // between the rows that are looked at, and between the columns
};

// Finds patches by the sum of squared differences. Keeps its scratch, so that one searcher serves many patches.
class PatchSearch {
 public:
  PatchSearch(const PatchPlane& plane, int32_t side, SearchWindow window);

  // The `count` patches nearest to the one at (row, column), itself included, as offsets of their first values in the
  // plane, in rising order; fewer when the window holds fewer. Equally near ones are taken in rising order.
  void Find(int32_t row, int32_t column, int32_t count, std::vector<uint32_t>& found);

 private:
  const PatchPlane& plane_;
  int32_t side_;
  SearchWindow window_;
  std::vector<float> distance_;
  std::vector<uint64_t> candidates_;
};

}  // namespace norv
