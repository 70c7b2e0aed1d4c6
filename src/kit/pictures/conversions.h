// Between pictures and the tool's own image types.
#pragma once

#include "image/bit_image.h"
#include "image/float_image.h"

namespace norv {

struct Picture;
struct PictureShape;

// Display RGB in three planes (grey: three equal ones) and format 23; with alpha four planes and format 0x2007. The
// planes of the picture are used up.
FloatImage ToFloatImage(Picture picture);
// The format that it takes.
int32_t FloatFormatOf(const PictureShape& shape);

// Display RGB of any known colour model; the fourth plane of the 0x2000 family is the alpha plane.
Picture ToPicture(FloatImage image);

// Display RGB to three bytes a pixel, values above 255 scaled down with their colour, and back.
BitImage ToBitImage(const FloatImage& image);
Picture ToPicture(const BitImage& image);

// A grey picture of that plane, with the second as its alpha unless that is empty. Used up.
Picture GreyPicture(matrix plane, matrix alpha = matrix());

// The first colour as grey, and the alpha: what equal colours of a grey picture have become. Used up.
Picture FirstColour(Picture picture);

// Without its alpha: on white, as far as alpha lets it through.
void LayOnWhite(Picture& picture);

}  // namespace norv
