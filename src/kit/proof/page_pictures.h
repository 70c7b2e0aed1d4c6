// What a page shows of a picture and of what it was made of: all of it, reduced where it is large, and some parts as
// they are, pixel by pixel.
#pragma once

#include <string>
#include <vector>

#include "kit/formats/encoding.h"
#include "linear/matrix2.h"

namespace norv {

// Pixels that a page shows of a picture at most: larger ones are reduced to kShownSide, and kShownParts of kPartSide
// are cut out of them where there is most detail.
inline constexpr int32_t kShownSide = 1000, kShownParts = 3, kPartSide = 280;

// The same part of both, each in its own pixels.
struct ShownPair {
  std::string name;               // "whole", "cutout 1"
  std::string before, after;      // data: URIs
  int32_t width = 0, height = 0;  // pixels of the result that it shows
  int32_t shownWidth = 0;         // pixels that `after` has across: width, unless it is reduced
  // Where `before` lies over it, in parts of width and height: it may begin outside by less than a pixel of its own.
  double left = 0, top = 0, across = 1, down = 1;
};

// From the files. Throws what reading them throws.
std::vector<ShownPair> ShownPairs(const std::string& input, const ReadChoice& read, const std::string& output);

// The map of the differences, each so many times as large as it is: a data: URI.
std::string MapUri(const matrix& differences, float times);

}  // namespace norv
