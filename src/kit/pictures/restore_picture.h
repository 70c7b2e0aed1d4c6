// Restoration and denoising of pictures, by the code of the tool's own modes.
#pragma once

#include "kit/pictures/picture.h"
#include "restore/parameters.h"

namespace norv {

// The picture as a whole, or in `bands` horizontal bands (1 and more) on `threads` threads. Grey stays grey.
Picture RestorePicture(Picture picture, const RestoreParameters& parameters, int32_t bands, int32_t threads);

// The same as three bytes a pixel in and out; alpha is dropped with a warning.
Picture RestoreBytes(Picture picture, const RestoreParameters& parameters, int32_t bands, int32_t threads);

struct DenoiseChoice {
  bool best = false;  // groups of similar patches instead of patch components
  float noise = 0;    // standard deviation in grey levels; 0: estimated
  int32_t threads = 1;
};

// The colours of the picture; its alpha plane stays.
void DenoisePicture(Picture& picture, const DenoiseChoice& choice);

}  // namespace norv
