// Restoration that starts from an enlargement instead of from resampling: what a network has guessed is made to agree
// with the picture that it was made of, and smooth along edges.
#pragma once

#include <memory>

#include "kit/pictures/picture_rows.h"
#include "restore/parameters.h"

namespace norv {

// Rows of the strips that a picture is refined in, and rows that a strip sees of each of its neighbours, both of the
// small picture. They depend on nothing else, so that neither threads nor memory change the result.
inline constexpr int32_t kRefinedRows = 192, kRefineMargin = 24;

// The luminance of rows that have passed by, for as long as somebody needs them.
class PassedLuminance;

// The same picture; the luminance of its rows is kept in `passed` on the way.
PictureSource KeepingLuminance(PictureSource small, std::shared_ptr<PassedLuminance>& passed);

// The rows of `large`, an enlargement by parameters.factor of the picture whose luminance has passed, with their
// luminance restored from what it is; colours follow, alpha stays. Up to `threads` strips are in work and in memory at
// a time. Throws the texts of CheckRestoration, matrix's out-of-memory message and what the sources throw.
PictureSource RefinedRows(PictureSource large, std::shared_ptr<PassedLuminance> passed,
                          const RestoreParameters& parameters, int32_t threads);

}  // namespace norv
