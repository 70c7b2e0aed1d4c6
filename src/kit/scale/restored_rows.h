// Restoration of pictures of any size in bounded memory, by all cores on one plane.
#pragma once

#include "kit/pictures/picture_rows.h"
#include "restore/parameters.h"

namespace norv {

// A picture is restored as a whole up to so many pixels of the result. A larger one is restored in strips, so that
// memory stays bounded: about so many pixels of the result, in whole rows, and they see kRestoreMargin rows of the
// picture beyond their ends. The cut depends on the picture's size alone.
struct StripSizes {
  int64_t wholePixels = int64_t{1} << 25, stripPixels = int64_t{1} << 24;
};

// Rows of the picture in a strip; all of them where it is restored as a whole.
int32_t RestoredRowsOf(const PictureShape& picture, int32_t factor, const StripSizes& sizes = {});
// What the restoration of one strip of it takes beside the strip's own rows, by a team of so many threads.
int64_t RestoredStripMemory(const PictureShape& picture, const RestoreParameters& parameters, int32_t threads,
                            const StripSizes& sizes = {});

// The picture enlarged and sharpened, as it is asked for, by a team of so many threads (0: as many as the process may
// use processors) that leaves no trace in the result. Grey stays grey. Throws the texts of CheckRestoration, matrix's
// out-of-memory message and what the source throws.
PictureSource RestoredRows(PictureSource picture, const RestoreParameters& parameters, int32_t threads,
                           const StripSizes& sizes = {});

}  // namespace norv
