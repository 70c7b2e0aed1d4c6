// Picture files of people: PNG, JPEG, TIFF ... in and out.
#pragma once

#include <functional>
#include <string>

#include "kit/formats/encoding.h"
#include "kit/pictures/picture_rows.h"

namespace norv {

// From a file's contents, whatever its name, upright as its orientation tag says. Row by row; what the format gives as
// a whole only (interlaced PNG, WebP, odd kinds of TIFF) and what has to be turned is held as samples. Throws a Failure
// that names the file.
PictureSource OpenPicture(const std::string& path, const ReadChoice& choice = {});
Picture ReadPicture(const std::string& path, const ReadChoice& choice = {});

// What a picture becomes in a file.
struct InFile {
  const char* format;  // its name
  PictureShape shape;  // of what is written: without alpha where the format has no place for it, of the file's bits
};
// In the format that the name asks for. Throws a Failure for a name, size or precision that there is no format for.
InFile PictureInFile(const std::string& path, const PictureShape& shape, const WriteChoice& choice);

// Whether such a file carries a receipt when one is chosen (EncodingChoice::receipt).
bool HoldsReceipt(const std::string& path, const WriteChoice& choice);

// Puts the bytes of rows at their places in a file, of which the first is row `first` of the picture.
using PutBytes = std::function<void(int64_t position, const void* bytes, size_t size)>;
using PlaceOfRows = std::function<void(Picture rows, int64_t first, const PutBytes& put)>;
// For such a file, whose sink is finished without these rows; null where rows have no places.
PlaceOfRows PlacesInPicture(const std::string& path, const PictureShape& shape, const WriteChoice& choice);

// To that format, over what is there. Throws as PictureInFile() does.
PictureSink CreatePicture(const std::string& path, const PictureShape& shape, const WriteChoice& choice);
// Returns what the sink's finish() returns.
int64_t WritePicture(const std::string& path, Picture picture, const WriteChoice& choice);

}  // namespace norv
