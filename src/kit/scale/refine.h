// Restoration that starts from an enlargement instead of from resampling: what a network has guessed is made to agree
// with the picture that it was made of, and smooth along edges.
#pragma once

#include <memory>

#include "kit/pictures/picture_rows.h"
#include "linear/matrix2.h"
#include "restore/parameters.h"

namespace norv {

// A picture is refined in strips of up to so many of its enlarged rows and pixels, one after the other, and each sees
// so many rows of its neighbours. The cut depends on the picture's size alone, so that neither threads nor memory
// change the result.
inline constexpr int32_t kRefinedRows = 2048, kRefinedPixels = 1 << 23, kRefineMargin = 48;

// Rows of the small picture in a strip of one that is enlarged by the factor.
int32_t RefinedRowsOf(int32_t width, int32_t height, int32_t factor);

// The luminance, multiplied by alpha, of rows that have passed by, for as long as somebody needs them.
class PassedLuminance;

// The same picture; the luminance of its rows is kept in `passed` on the way.
PictureSource KeepingLuminance(PictureSource small, std::shared_ptr<PassedLuminance>& passed);

// Of those rows first, first + 1, ... as a plane; what is above them is forgotten.
matrix TakePassed(PassedLuminance& passed, int32_t first, int32_t count);

// The rows of `large`, an enlargement by parameters.factor of the picture whose luminance has passed, with their
// luminance restored from what it is; colours follow, alpha stays (colours are multiplied by it meanwhile). A team of
// so many threads (0: as many as the process may use processors) works on a strip. Throws the texts of
// CheckRestoration, matrix's out-of-memory message and what the sources throw.
PictureSource RefinedRows(PictureSource large, std::shared_ptr<PassedLuminance> passed,
                          const RestoreParameters& parameters, int32_t threads);

}  // namespace norv
