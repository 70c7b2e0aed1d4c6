// Noise removal by low-rank approximation of groups of similar patches.
#pragma once

#include <cstdint>
#include <vector>

#include "linear/matrix2.h"

namespace norv {

struct GroupSettings {
  int32_t iterations;
  int32_t side;     // of the patches, 2 .. 12
  double strength;  // of the singular-value weights, above 0
  double feedback;  // share of the residual that comes back, 0 .. 1, per iteration
  bool ranked;      // patches weigh the less, the higher their group's rank
  bool twoStep;     // fewer groups, found by a coarse search
  int threads;      // results do not depend on it
};

// A plane to work on and its noise's standard deviation in its own units, 0 where there is none.
struct NoisyPlane {
  matrix* plane;
  double sigma;
};

// Denoises all planes at once. Each iteration feeds back a part of what was removed, groups patches by likeness in the
// result so far, approximates every group by one of low rank, with the noise that is left there, and averages (Gu, Xie,
// Meng, Zuo, Feng and Zhang, Weighted nuclear norm minimization and its applications to low level vision, IJCV 2017).
// Planes without noise, and those smaller than a patch, stay unchanged.
void FilterGroups(const std::vector<NoisyPlane>& planes, const GroupSettings& settings);

}  // namespace norv
