// The row kernels of the restoration for one level.
#include "simd/restore/differences-inl.h"
#include "simd/restore/orientation-inl.h"
#include "simd/restore/rows-inl.h"
#include "simd/restore/weights-inl.h"

namespace norv::NORV_LEVEL {

extern const RestoreKernels kTable;
const RestoreKernels kTable = {
    .level = kCompiledLevel,
    .scaleAndAdd = ScaleAndAdd,
    .addScaled = AddScaled,
    .addDifferences = AddDifferences,
    .addSquares = AddSquares,
    .addDifferenceSquares = AddDifferenceSquares,
    .isotropicSquares = IsotropicSquares,
    .isotropicStep = IsotropicStep,
    .crossSquares = CrossSquares,
    .crossStep = CrossStep,
    .scaledCrossSquares = ScaledCrossSquares,
    .scaledCrossStep = ScaledCrossStep,
    .directionalSquares = DirectionalSquares,
    .directionalStep = DirectionalStep,
    .differenceStep = DifferenceStep,
    .measureIsotropic = MeasureIsotropic,
    .measureCross = MeasureCross,
    .measureDot = MeasureDot,
    .measureDifference = MeasureDifference,
    .squareRoot = SquareRoots,
    .huber = Huber,
    .lorentzian = Lorentzian,
    .shaped = Shaped,
    .tensor = Tensor,
    .direction = Direction,
};

}  // namespace norv::NORV_LEVEL
