// What pictures' spectra have in common: the power of natural pictures falls as a power of frequency, close to its
// square (Field 1987), faster or slower, more or less along the axes from picture to picture. What a blur or a
// reduction filter has done shows as a departure from that.
#pragma once

#include <span>
#include <vector>

namespace norv {

// How much is allowed for what pictures differ in beside what is looked for.
struct PictureVariety {
  double exponent;  // deviation of the exponent from kPowerExponent
  double blur;      // deviation of the square of a blur that the picture had before, pixels^2; 0: none
};

inline constexpr double kPowerExponent = 2.2;

// How far measured powers (PowerInCells) are from expected ones (CellMeans of frequency^-kPowerExponent and what was
// done to it) with white noise of this variance beside, both in the order of SpectrumCells(), after level, exponent,
// differences between directions and earlier blur have been fitted as far as they are likely: minus twice the
// logarithm of a likelihood up to a constant, the least where the expectation explains the picture best.
double Misfit(std::span<const double> measured, std::span<const double> expected, double noise,
              const PictureVariety& variety);

// Neighbouring cells err together, so that misfits of this many times the difference are as telling as independent
// ones: found on photographs shrunk by known filters.
inline constexpr double kMisfitTemper = 4;

// exp(-misfit / 2) in proportion to the best, tempered, so that sums of them compare.
std::vector<double> Likelihoods(std::span<const double> misfits);

// The variance in the luminance of what rounding to samples of so many bits left, in grey levels^2.
double RoundingNoise(int bits, bool grey);

}  // namespace norv
