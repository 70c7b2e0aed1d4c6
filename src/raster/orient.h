// The eight orientations of a plane: mirrors, rotations by quarters, transposes.
#pragma once

#include <cstdint>
#include <vector>

#include "linear/matrix2.h"

namespace norv {

inline constexpr int32_t kOrientations = 8;

// D becomes orientation k (0 .. 7) of S: 0 identity, 1 left-right, 2 top-bottom, 3 clockwise, 4 half turn,
// 5 anticlockwise, 6 anti-transpose, 7 transpose. For another k, D keeps its size and is filled with zeros.
void OrientMatrix(matrix& D, const matrix& S, int32_t k);

// A pixel of a plane.
struct Place {
  int32_t row, column;
};
// Where pixel `to` of orientation k (0 .. 7) of a plane of H rows and W columns comes from.
Place OrientedPlace(int32_t k, Place to, int32_t H, int32_t W);
// Whether orientation k exchanges rows and columns.
bool IsTurnedAcross(int32_t k);

// The inverse: OrientMatrix with 3 and 5 exchanged.
void RestoreOrientation(matrix& D, const matrix& S, int32_t k);

// side x side blocks as a permutation: element i of orientation k of a block is element permutation[i] of the block.
std::vector<int32_t> OrientationPermutation(int32_t side, int32_t k);

}  // namespace norv
