// What making pictures takes of a machine, by estimate: formulas with constants that were measured on one.
#pragma once

#include <algorithm>
#include <cstdint>

namespace norv {

struct NeuralNet;
struct PictureShape;
struct RestoreParameters;

struct Cost {
  double seconds = 0;    // of one core
  double held = 0;       // bytes, whatever the threads
  double aThread = 0;    // bytes that every thread adds,
  double threads = 1e9;  // up to so many

  double strip = 0;  // bytes of a strip (strips.h) on its way through all that is done to it

  uint64_t Memory(int32_t count) const {
    const double strips = count == 1 ? 1 : 1.5 * count + 1;
    return static_cast<uint64_t>(held + aThread * std::min<double>(count, threads) + strip * strips);
  }
};

// One behind the other on the way of the same rows; of both what is held counts.
Cost operator+(const Cost& a, const Cost& b);

// Of the program itself, and of reading and writing such pictures row by row.
Cost CostOfFiles(const PictureShape& from, const PictureShape& result);
// Of a picture of which a file, or what is done to it, holds all samples.
Cost CostOfHolding(const PictureShape& shape, double bytesASample);
// Of rows that are resampled on their way.
Cost CostOfResampling(const PictureShape& from, const PictureShape& result);
// Of bringing a result back to the picture (agreement.h) whose enlargement by the factor was restored before.
Cost CostOfAgreement(const PictureShape& from, int32_t factor, const PictureShape& result);
// Of a network's pass over a picture of that shape: averaged, eight of them; for the luminance or for every colour.
Cost CostOfNetwork(const PictureShape& from, const NeuralNet& net, bool averaged, bool luminance);
// Of the restoration of the luminance that follows networks; `result` is the enlarged picture.
Cost CostOfRefinement(const PictureShape& result, const RestoreParameters& parameters);
// Of a restoration as a whole or in strips (bands: 0), or in bands, the picture held before and behind them. Throws as
// CheckRestoration().
Cost CostOfRestoration(const PictureShape& from, const RestoreParameters& parameters, int32_t bands);
// Of denoising, the picture held.
Cost CostOfDenoising(const PictureShape& from, bool best);

}  // namespace norv
