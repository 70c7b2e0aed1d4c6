// The colour representations that a restoration may work in, and the transform that decorrelates colours.
#pragma once

#include <array>
#include <cstdint>

#include "image/float_image.h"
#include "platform/threads/standing_team.h"

namespace norv {

struct Representation {
  int32_t format;     // that is worked in; 0: the image's own
  int32_t restored;   // planes from the first on; the others are only enlarged, for the first one gathers the detail
  bool decorrelated;  // by the image's own colour statistics, within the format
};

// An unknown code works in the image's own format and restores the first plane.
const Representation& RepresentationOf(int32_t code);

using ColourMatrix = std::array<std::array<double, 3>, 3>;

// Row k is the k-th singular vector of the second moments of the first three planes, which are not centred: a
// Karhunen-Loeve transform of the colours. The image has pixels.
ColourMatrix DecorrelatingMatrix(const FloatImage& image, StandingTeam& team);
ColourMatrix Transposed(const ColourMatrix& a);

// Every pixel's first three values become the matrix times them.
void TransformColours(FloatImage& image, const ColourMatrix& rows, StandingTeam& team);

}  // namespace norv
