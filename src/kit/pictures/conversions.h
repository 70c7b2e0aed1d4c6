// Between pictures and the tool's own image types, and files of either kind in and out.
#pragma once

#include <string>

#include "image/bit_image.h"
#include "image/float_image.h"
#include "kit/pictures/file_kind.h"
#include "kit/pictures/picture.h"

namespace norv {

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

// A plane as a grey picture. Used up.
Picture GreyPicture(matrix plane);

// 0.299 R + 0.587 G + 0.114 B on the 0..255 scale: the first value of the YCbCr model.
matrix LuminanceOf(const Picture& picture);

// A picture from a picture file, .fdib, .mat (grey) or .bit. Throws a Failure that names the file.
std::unique_ptr<PictureReader> OpenImage(const std::string& path);
Picture LoadImage(const std::string& path);

// To .fdib, .mat (luminance), .bit or a picture format, by the name. SaveImage returns what WritePicture returns.
std::unique_ptr<PictureWriter> CreateImage(const std::string& path, const PictureShape& shape,
                                           const WriteChoice& choice);
int64_t SaveImage(const std::string& path, Picture picture, const WriteChoice& choice);

// Just the float image or matrix file, throwing instead of returning a failure.
FloatImage LoadFloatImage(const std::string& path);
void SaveFloatImage(const std::string& path, const FloatImage& image);

}  // namespace norv
