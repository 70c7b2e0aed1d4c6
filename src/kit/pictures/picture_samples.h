// Both ways between planes of display values and the samples of a file.
#pragma once

#include "kit/formats/samples.h"

namespace norv {

struct Picture;

// Samples of 16 bits keep their precision (value / 257). Upright, as the samples' turn says.
Picture ToPicture(const Samples& samples);

// Samples of 8 or 16 bits: rounded to nearest, values outside 0..255 moved to the nearest end; `moved` is raised by how
// many were outside by more than rounding. Floats: no value is moved.
Samples ToSamples(const Picture& picture, int32_t bits, int64_t& moved);

// The first row of samples into row r of a picture of the same width and channels.
void UnpackRow(const Samples& row, int32_t r, Picture& picture);

// Row r into the first row of samples, of the picture's channels as many as those have; returns how many had to be
// moved.
int64_t PackRow(const Picture& picture, int32_t r, Samples& row);

// The same to samples of 8 bits, rounded up or down by the pattern of dither.h for row y of the whole picture.
int64_t PackRowDithered(const Picture& picture, int32_t r, int32_t y, Samples& row);

}  // namespace norv
