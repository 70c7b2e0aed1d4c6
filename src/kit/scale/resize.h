// Pictures of any size from pictures of any other, by filters that do not alias.
#pragma once

#include "kit/pictures/picture_rows.h"
#include "kit/scale/wanted_size.h"
#include "raster/separable.h"

namespace norv {

enum class ResizeFilter { nearest, cubic, lanczos };

// An axis of `from` pixels as one of `to` pixels: Lanczos-3, or cubic convolution with a = -1/2 (Keys 1981), stretched
// by the ratio where the axis becomes shorter, or the pixel whose middle is nearest. Outside pixels are mirrored
// without repeating the edge; the weights of a position have the sum 1.
ResampleTable ResizeTable(int32_t from, int32_t to, ResizeFilter filter);

// The picture in another size, row by row as it is asked for and in memory that does not grow with it, colours
// multiplied by alpha meanwhile. threads: as in InStrips(), which nothing shows of.
PictureSource Resized(PictureSource picture, const PictureSize& size, ResizeFilter filter, int32_t threads);

// The same by any tables of both axes. multiplied: colours by alpha meanwhile.
PictureSource Resampled(PictureSource picture, ResampleTable horizontal, ResampleTable vertical, bool multiplied,
                        int32_t threads);

// The picture smaller by a whole factor in the same way, with the reduction filter of a ShrinkOrder, cropped at the
// right and below to a multiple of the factor. Throws a Failure for an unknown order and for a picture smaller than the
// factor.
PictureSource Shrunk(PictureSource picture, int32_t factor, int32_t shrinkOrder, int32_t threads);

}  // namespace norv
