// Restoration in bands and denoising of pictures, by the code of the tool's own modes.
#pragma once

#include "kit/pictures/picture_rows.h"
#include "restore/parameters.h"

namespace norv {

struct Picture;

// The picture enlarged and sharpened in horizontal bands, 1 and more, up to `threads` of them at a time. Each band is
// restored as a picture of its own, so that their number may change the result; a picture of too few rows for them is
// one band, with a warning. Grey stays grey. The picture is held whole before and after.
PictureSource RestoredInBands(PictureSource picture, const RestoreParameters& parameters, int32_t bands,
                              int32_t threads);

// The same by way of three bytes a pixel: values are rounded before and after, alpha is dropped with a warning.
PictureSource RestoredOverBytes(PictureSource picture, const RestoreParameters& parameters, int32_t bands,
                                int32_t threads);

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
