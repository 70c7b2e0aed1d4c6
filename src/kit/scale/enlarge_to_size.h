// Pictures enlarged to any size: by networks, one after another, or by interpolation.
#pragma once

#include <optional>
#include <string>

#include "kit/formats/encoding.h"
#include "kit/models/network_plan.h"
#include "kit/scale/enlarge_picture.h"
#include "kit/scale/resize.h"
#include "kit/scale/restore_presets.h"

namespace norv {

// Throws a Failure for a file that is no network.
NeuralNet LoadNetwork(const std::string& path);
// How many times the network in a file enlarges. Throws a Failure for one that does not.
int32_t FactorOfNetwork(const std::string& path);

// How a picture is to become larger.
struct EnlargeWay {
  PictureSize size;
  std::optional<NetworkPlan> plan;  // the networks, one after another; none: by the filter alone
  NetEnlargement how;               // of networks; its threads of all
  ResizeFilter filter = ResizeFilter::lanczos;
  std::string preset = "";  // of the restoration: from the networks' answer, without them from Lanczos-3's, or of the
                            // picture in its own size; empty: none
  KnobValues knobs = {};    // instead of the preset's
  double blur = 0;          // pixels of a Gaussian to take back from a picture in its own size
};

// How many times larger the networks, or the restoration without them, make it before it gets its size.
int32_t ReachedFactor(const EnlargeWay& way, const PictureShape& shape);

// Whether the result is brought back to the picture (agreement.h): where a restoration that holds to it, none of whose
// settings was turned, is resampled afterwards, but for whole factors up to 4, which stay near it anyway.
bool AgreesInTheEnd(const EnlargeWay& way, const PictureShape& shape);

// The picture in that size, row by row as it is asked for. What networks make too large is reduced by Lanczos-3.
PictureSource Enlarged(PictureSource picture, const EnlargeWay& way);

}  // namespace norv
