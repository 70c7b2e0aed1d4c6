// CIE L*a*b* (CIE 15) by its definition.
#pragma once

#include <array>
#include <optional>

namespace norv {

// From X, Y, Z relative to a white point (x, y; none: D50), each 1 for white, to linear sRGB (IEC 61966-2-1), adapted
// by Bradford's matrix. A white point that cannot be counts as none.
std::array<double, 9> LabMatrix(const std::optional<std::array<double, 2>>& white);

// L* 0..100, a*, b* to sRGB, 0..1 for what it can show and beyond for the rest. The matrix: as from LabMatrix().
void LabToSrgb(const float* lab, const std::array<double, 9>& matrix, float* rgb);

}  // namespace norv
