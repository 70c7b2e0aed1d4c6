// The principal components of a plane's patches, and their numbered files.
#pragma once

#include <cstdint>

#include "linear/matrix2.h"

namespace norv {

// Learns from the patches of side x side values: column 0 becomes their mean, the columns behind it their side^2
// principal components in order of falling variance, orthonormal, each with its largest element positive. A patch's
// values are in rows, scanline by scanline. The plane holds at least one patch. The result does not depend on the
// number of threads.
void LearnComponents(const matrix& plane, int32_t side, int threads, matrix& components);

// Whether the matrix can be what LearnComponents() made for patches of this side: its size, and columns of length 1.
bool AreComponents(const matrix& components, int32_t side);

}  // namespace norv
