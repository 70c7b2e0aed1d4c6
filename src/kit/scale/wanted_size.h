// How large people want a picture to become.
#pragma once

#include <cstdint>
#include <string>

namespace norv {

struct PictureShape;

struct PictureSize {
  int32_t width = 0, height = 0;  // pixels

  friend bool operator==(const PictureSize&, const PictureSize&) = default;
};

// By a number, or to a width, a height or a longest side; 0: not said. Width and height together are a box.
struct WantedSize {
  double by = 0;
  int32_t width = 0, height = 0, longest = 0;

  bool Said() const { return by > 0 || width > 0 || height > 0 || longest > 0; }
};

enum class Direction { larger, smaller };

// The sides that the picture gets, each at least a pixel, `by` times as long or as short where that is said. The aspect
// is kept: a box whose own aspect is another by more than a pixel is filled as far as it goes, with a word on standard
// error. Throws a Failure for a picture without pixels, for sides that are too long, for the size that it has, and for
// one in the other direction.
PictureSize SizeOf(const PictureShape& shape, const WantedSize& wanted, Direction direction);

// How many times longer or shorter the longer side becomes, at least 1.
double FactorBetween(const PictureShape& shape, const PictureSize& size);
// "x1.5": how many times longer or shorter the longer side becomes.
std::string RatioInWords(const PictureShape& shape, const PictureSize& size);

}  // namespace norv
