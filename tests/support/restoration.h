// What tests ask of a restoration, and the enlargement that it starts from.
#pragma once

#include <iomanip>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "raster/separable.h"
#include "restore/parameters.h"

namespace norv::test {

// Quick, with weights that matter on planes of random grey levels.
inline RestoreParameters TestParameters(int32_t type, int32_t factor = 2, int32_t representation = 0) {
  RestoreParameters p{};
  p.factor = factor, p.kernelCode = -1;
  p.lambdaCross = 0.3f, p.lambda = 0.2f;
  p.deltaCross = 4, p.delta = 6;
  p.shapeCross = 0.8f, p.shapeDot = 0.6f;
  p.steps = 4, p.iterations = 2;
  p.orientationScale = 0.7f, p.emphasis = 0.4f;
  p.representation = representation, p.type = type;
  p.edgeThreshold = 60;
  return p;
}

inline matrix Enlarged(const matrix& small, int32_t f) {
  matrix large;
  ResampleSeparable(small, large, EnlargementTable(small.m, f), EnlargementTable(small.n, f));
  return large;
}

// The command line of one of the modes 0 to 5, which takes the edge threshold from the orientation scale.
inline std::vector<std::string> ModeWords(int mode, const RestoreParameters& p, int threads) {
  std::stringstream words;
  words << std::setprecision(9) << mode << ' ' << p.factor << ' ' << p.kernelCode << ' ' << p.lambdaCross << ' '
        << p.lambda << ' ' << p.deltaCross << ' ' << p.delta << ' ' << p.gateCross << ' ' << p.gate << ' '
        << p.spareCross << ' ' << p.spare << ' ' << p.shapeCross << ' ' << p.shapeDot << ' ' << p.steps << ' '
        << p.iterations << ' ' << p.orientationScale << ' ' << p.emphasis << ' ' << p.representation << ' ' << p.type
        << ' ' << p.keepMask << " 0 " << threads;
  return {std::istream_iterator<std::string>(words), {}};
}

}  // namespace norv::test
