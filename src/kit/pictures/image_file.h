// Pictures in and out of picture files and of the tool's own image files alike.
#pragma once

#include <functional>
#include <string>

#include "kit/pictures/picture_file.h"

namespace norv {

struct FloatImage;

// A picture from a picture file, .fdib, .mat (grey) or .bit. Throws a Failure that names the file.
PictureSource OpenImage(const std::string& path, const ReadChoice& choice = {});
Picture LoadImage(const std::string& path, const ReadChoice& choice = {});

// What a picture becomes in .fdib, .mat (luminance), .bit or a picture format, by the name. Throws as PictureInFile().
InFile ImageInFile(const std::string& path, const PictureShape& shape, const WriteChoice& choice);
// To that format, over what is there: for what has been asked before (destination.h).
PictureSink ReplaceImage(const std::string& path, const PictureShape& shape, const WriteChoice& choice);

// The places of rows in a file of that name and format, where they have some (.fdib, TIFF without compression); null
// where not.
PlaceOfRows PlacesOfRows(const std::string& path, const PictureShape& shape, const WriteChoice& choice);

// The same behind all questions of a Destination. SaveImage returns what the sink's finish() does.
PictureSink CreateImage(const std::string& path, const PictureShape& shape, const WriteChoice& choice);
int64_t SaveImage(const std::string& path, Picture picture, const WriteChoice& choice);

// Whether a file of this name is an image of the tool's own: .fdib, .mat or .bit.
bool HasImageName(const std::string& path);

// Just the float image file, throwing instead of returning a failure.
FloatImage LoadFloatImage(const std::string& path);
void SaveFloatImage(const std::string& path, const FloatImage& image);

}  // namespace norv
