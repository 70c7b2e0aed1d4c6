// Pictures made smaller and larger, plane by plane, the alpha plane like the others, colours multiplied by it.
#pragma once

#include <cstdint>

#include "linear/matrix2.h"

namespace norv {

enum class Interpolation : int32_t;
struct Picture;
struct PictureShape;

// Shrunk() (resize.h) of a picture in memory, on this thread.
Picture ShrinkPicture(Picture picture, int32_t factor, int32_t shrinkOrder);

// Throws a Failure when the sides of a picture enlarged by the factor would exceed 32 bits; what the sides multiply to
// is checked where memory is taken.
void RequireRoom(const PictureShape& shape, int32_t factor);

// The same of one plane.
matrix ShrinkPlane(matrix plane, int32_t factor, int32_t shrinkOrder);
matrix InterpolatePlane(const matrix& plane, int32_t factor, Interpolation interpolation);

}  // namespace norv
