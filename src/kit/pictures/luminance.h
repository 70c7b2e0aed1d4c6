// The luminance of pictures, for what looks at nothing else of them: 0.299 R + 0.587 G + 0.114 B on the 0..255 scale,
// as the first value of the YCbCr model.
#pragma once

#include <string>

#include "kit/formats/encoding.h"
#include "kit/pictures/picture_rows.h"
#include "linear/matrix2.h"
#include "platform/threads/standing_team.h"

namespace norv {

// Whatever their alpha. One plane, m = width and n = height. Throws what reading the rows throws.
matrix LuminanceOf(const Picture& picture);
matrix LuminanceOf(const Picture& picture, StandingTeam& team);
matrix LuminanceOf(const PictureSource& picture);

// Of a picture on white, as far as its alpha lets that through.
struct SeenLuminance {
  matrix plane;
  int32_t bits = 8;   // of a sample of the file that it came from
  bool grey = false;  // whether that had no colours
};
SeenLuminance OpaqueLuminance(Picture picture);

// From any file that OpenImage() reads; throws as it does.
matrix LoadLuminance(const std::string& path, const ReadChoice& choice = {});
SeenLuminance LoadOpaqueLuminance(const std::string& path, const ReadChoice& choice = {});

}  // namespace norv
