// Restoration and denoising of pictures, by the code of the tool's own modes.
#pragma once

#include "kit/pictures/picture_rows.h"
#include "restore/parameters.h"

namespace norv {

struct Picture;

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

// The same in horizontal bands, 1 and more, up to `threads` of them at a time. Each band is restored as a picture of
// its own, so that their number may change the result; a picture of too few rows for them is one band, with a warning.
Picture RestoreInBands(Picture picture, const RestoreParameters& parameters, int32_t bands, int32_t threads);

// The same by way of three bytes a pixel: values are rounded before and after, alpha is dropped with a warning.
Picture RestoreBytes(Picture picture, const RestoreParameters& parameters, int32_t bands, int32_t threads);

struct DenoiseChoice {
  bool best = false;    // groups of similar patches instead of patch components
  float noise = 0;      // standard deviation in grey levels; 0: estimated
  int32_t threads = 1;  // which do not change the result
};

// Noise and compression grain removed from the colours of the picture; its alpha plane stays.
void DenoisePicture(Picture& picture, const DenoiseChoice& choice);
// The same of one that passes by: it is held whole.
PictureSource DenoisedRows(PictureSource picture, const DenoiseChoice& choice);

}  // namespace norv
