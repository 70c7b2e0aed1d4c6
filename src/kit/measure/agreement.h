// Enlargements that agree with what they were made of: reduced again, they are the picture.
#pragma once

#include <memory>

#include "kit/pictures/picture_rows.h"
#include "kit/scale/wanted_size.h"

namespace norv {

class PassedLuminance;

// Rows of a strip, however wide: what it sees of its neighbours, a dozen enlarged rows of the picture at both ends, is
// the smaller part for most factors.
inline constexpr int32_t kAgreeingRows = 128;

// The rows of `large`, an enlargement of a picture of the size `small` whose luminance has passed (KeepingLuminance,
// for nobody else), with the least change (in squares) of its luminance after which ReductionTable() with the cubic
// filter makes that picture's of it: what the reduction misses goes back through its right inverse, which is where
// iterated back-projection (Irani and Peleg 1991) ends. Colours follow, alpha stays; colours are multiplied by it
// meanwhile. What is no number changes nothing. threads: as in InStrips(), which nothing shows of.
PictureSource Agreeing(PictureSource large, const std::shared_ptr<PassedLuminance>& passed, const PictureSize& small,
                       int32_t threads);

}  // namespace norv
