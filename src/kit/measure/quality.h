// How alike two planes are.
#pragma once

#include "linear/matrix2.h"

namespace norv {

// The plane without `border` elements on every side; empty when nothing is left.
matrix WithoutBorder(const matrix& plane, int32_t border);

// Peak signal-to-noise ratio in decibels for values of 0..255 (the peak is 255); infinity for equal planes. Both of the
// same shape and not empty.
double Psnr(const matrix& a, const matrix& b);

// Structural similarity (Wang, Bovik, Sheikh, Simoncelli 2004): an 11 x 11 Gaussian window of sigma 1.5, K1 = 0.01,
// K2 = 0.03, range 255, the mean over all positions where the window lies inside; no reduction before. NaN for planes
// smaller than the window.
double Ssim(const matrix& a, const matrix& b);

}  // namespace norv
