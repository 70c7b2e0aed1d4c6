// Noise removal by shrinking the principal components of overlapping patches.
#pragma once

#include <cstdint>

#include "linear/matrix2.h"

namespace norv {

struct ComponentSettings {
  int32_t side;  // of the patches, 2 .. 16
  int32_t kept;  // components, the strongest ones, up to side^2; 0: all, and the threshold alone decides
  bool hard;     // threshold only; otherwise its result guides a Wiener shrinkage
  int threads;   // results do not depend on it
};

// Denoises a plane that holds at least one patch. Every patch is written in the components (as LearnComponents() makes
// them), its small coefficients go, and the overlapping patches are averaged, sparse ones with more weight (Muresan and
// Parks, Adaptive principal components and image denoising, ICIP 2003; Deledalle, Salmon and Dalalyan, Image denoising
// with patch based PCA: local versus global, BMVC 2011). Unless `hard`, a second pass scales the coefficients c of the
// noisy patches by p^2 / (p^2 + sigma^2), p being those of the first pass's result. sigma: the noise's standard
// deviation in the plane's unit, above 0.
void FilterByComponents(matrix& plane, double sigma, const matrix& components, const ComponentSettings& settings);

}  // namespace norv
