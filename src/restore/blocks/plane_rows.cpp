#include "restore/blocks/plane_rows.h"

namespace norv {

RowsWithHalo::RowsWithHalo(matrix& plane, Range own, Range window)
    : window_(window),
      width_(plane.m),
      height_(plane.n),
      copies_(MakeAligned<float>(
          static_cast<size_t>((own.begin - window.begin + (window.end - own.end)) * int64_t{plane.m}))) {
  float* copy = copies_.get();
  for (int64_t r = window.begin; r < window.end; ++r) {
    const bool isOwn = r >= own.begin && r < own.end;
    rows_.push_back(isOwn ? plane.z[r] : copy);
    if (!isOwn) copy += plane.m;
  }
}

}  // namespace norv
